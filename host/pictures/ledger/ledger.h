// The file that every step of placing is written to and synced: lines of JSON, only ever appended.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "host/pictures/ledger/entry.h"
#include "host/process/pipe.h"

namespace host::pictures {

class Ledger {
  public:
    // Makes it where there is none. An errno, or 0. EINVAL: something that is no file stands there.
    int open(int folder, const char* name);

    // On the disk when it returns. An errno, or 0; a line that was cut stays and is skipped.
    int append(const LedgerEntry& entry);

    // Every line that can be read, in order, until the function says false.
    void read(const std::function<bool(const LedgerEntry&)>& each) const;

  private:
    Descriptor file_;
    bool torn_ = false;  // the last line has no line feed
};

// The lines of some bytes that come in pieces: what `read` is made of.
class LedgerLines {
  public:
    // Longer lines are garbage.
    static constexpr std::size_t longest = std::size_t{64} * 1024;

    explicit LedgerLines(const std::function<bool(const LedgerEntry&)>& each) : each_(each) {}

    // False: enough.
    bool add(std::string_view bytes);

  private:
    bool end_line();

    const std::function<bool(const LedgerEntry&)>& each_;
    std::string line_;
    bool too_long_ = false;
};

}  // namespace host::pictures
