// The pictures of a ledger, a page at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "host/pictures/ledger/ledger.h"
#include "host/values/picture.h"

namespace host::pictures {

// Of one ledger. Nothing of it stays in memory but where the latest pages ended: the next one is
// read from there, however long the ledger is.
class Pages {
  public:
    // At most `limit` pictures, oldest first; those that were placed after the one of this id if
    // the ledger has it, all otherwise. Their paths are from the folder.
    std::vector<Picture> behind(const std::string& id, const Ledger& ledger, std::size_t limit);

  private:
    struct Mark {
        std::string id;
        std::uint64_t end;  // of the line that says that it was placed
    };
    // Several clients may turn pages at the same time.
    static constexpr std::size_t most = 64;

    std::uint64_t end_of(const std::string& id, const Ledger& ledger);
    void remember(const std::string& id, std::uint64_t end);

    std::deque<Mark> marks_;  // the latest first
};

}  // namespace host::pictures
