#pragma once

#include <cstdint>
#include <vector>

namespace explore {

// A set of 64-bit keys with a small number for each; a search meets tens of millions of them.
class KeyTable {
  public:
    // The number that stands with the key; `fresh`, now, when the key was not there.
    int& number_for(std::uint64_t key, int fresh) {
        if (used_ * 2 >= entries_.size()) {
            grow();
        }
        Entry& entry = place_of(key);
        if (entry.key == 0) {
            entry.key = key | 1;
            entry.number = fresh;
            ++used_;
        }
        return entry.number;
    }

    bool insert(std::uint64_t key) {
        const std::uint64_t before = used_;
        number_for(key, 0);
        return used_ != before;
    }

    std::uint64_t size() const {
        return used_;
    }

  private:
    struct Entry {
        std::uint64_t key;  // 0: free
        int number;
    };

    Entry& place_of(std::uint64_t key) {
        const std::uint64_t mask = entries_.size() - 1;
        std::uint64_t place = key >> 1 & mask;
        while (entries_[place].key != 0 && entries_[place].key != (key | 1)) {
            place = (place + 1) & mask;
        }
        return entries_[place];
    }

    void grow() {
        std::vector<Entry> old(entries_.empty() ? 4096 : entries_.size() * 2);
        old.swap(entries_);
        for (const Entry& entry : old) {
            if (entry.key != 0) {
                place_of(entry.key) = entry;
            }
        }
    }

    std::vector<Entry> entries_;
    std::uint64_t used_ = 0;
};

}  // namespace explore
