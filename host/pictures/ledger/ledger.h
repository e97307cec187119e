// The file that every step of placing is written to and synced: lines of JSON, only ever appended.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "host/pictures/ledger/entry.h"
#include "host/process/pipe.h"

namespace host::pictures {

class Ledger {
  public:
    // Makes it where there is none. An errno, or 0. EINVAL: something that is no file stands there.
    int open(int folder, const char* name);

    // On the disk when it returns. An errno, or 0; a line that was cut stays and is skipped.
    int append(const LedgerEntry& entry);

    // Every line that makes sense, in order, until the function says false. An errno, or 0.
    int read(const std::function<bool(const LedgerEntry&)>& each) const;

    // The same from the beginning of a line on. `end`: of the line, in bytes from the beginning.
    using EachLine = std::function<bool(const LedgerEntry&, std::uint64_t end)>;
    int read_from(std::uint64_t begin, const EachLine& each) const;

    // Where the latest line that says this ends; nothing when there is none. Costs what stands
    // behind that line.
    std::optional<std::uint64_t> end_of(const LedgerEntry& entry) const;
    // Whether a line that says this ends there.
    bool has_before(std::uint64_t end, const LedgerEntry& entry) const;

  private:
    std::string bytes(std::uint64_t begin, std::size_t most, int& error) const;

    Descriptor file_;
    bool torn_ = false;  // the last line has no line feed
};

// The lines of some bytes that come in pieces: what `read` is made of.
class LedgerLines {
  public:
    // Longer lines are garbage.
    static constexpr std::size_t longest = std::size_t{64} * 1024;

    // The first one begins at that many bytes.
    explicit LedgerLines(const Ledger::EachLine& each, std::uint64_t begin = 0)
        : each_(each), taken_(begin) {}

    // False: enough.
    bool add(std::string_view bytes);

  private:
    bool end_line();

    const Ledger::EachLine& each_;
    std::uint64_t taken_;
    std::string line_;
    bool too_long_ = false;
};

}  // namespace host::pictures
