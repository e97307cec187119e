// Any bytes as a ledger: what is read of it can be written and read again, and names nothing
// outside the folder.

#include "host/pictures/ledger/ledger.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <variant>
#include <vector>

#include "host/values/utf8.h"
#include "tests/worker/fuzz/require.h"

namespace {

using namespace host::pictures;
using host::escape_bytes;
using host::is_utf8;
using host::unescape_bytes;

void stays_in_the_folder(const std::string& path) {
    require(!path.empty() && path[0] != '/', "a path begins in the folder");
    require(("/" + path + "/").find("/../") == std::string::npos, "a path leads nowhere else");
    require(path.find('\0') == std::string::npos, "a path is one that a disk can have");
}

// In pieces of this size.
std::vector<LedgerEntry> read(std::string_view bytes, std::size_t piece) {
    std::vector<LedgerEntry> entries;
    const Ledger::EachLine keep = [&](const LedgerEntry& entry, std::uint64_t end) {
        require(end <= bytes.size() && bytes[end - 1] == '\n', "a line ends with its line feed");
        entries.push_back(entry);
        return true;
    };
    LedgerLines lines(keep);
    for (std::size_t at = 0; at < bytes.size(); at += piece) {
        lines.add(bytes.substr(at, piece));
    }
    return entries;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const std::vector<LedgerEntry> entries = read(bytes, size + 1);
    require(entries == read(bytes, 7), "pieces make no difference");
    for (const LedgerEntry& entry : entries) {
        if (const auto* const placing = std::get_if<Placing>(&entry)) {
            stays_in_the_folder(placing->picture.path);
            stays_in_the_folder(placing->run);
            stays_in_the_folder(placing->from);
        }
        const std::string line = write_entry(entry);
        require(is_utf8(line) && line.find('\n') == line.size() - 1, "a line is one line of text");
        const auto again = read_entry(line);
        require(again && write_entry(*again) == line, "what is written is read");
    }
    require(unescape_bytes(escape_bytes(bytes)) == bytes, "any name can be written down");
    require(is_utf8(escape_bytes(bytes)), "a name is written as text");
    return 0;
}
