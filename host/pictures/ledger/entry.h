// One line of the ledger. A picture's own line comes before it is moved; what became of it follows
// in short ones.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "host/pictures/disk/identity.h"
#include "host/values/picture.h"

namespace host::pictures {

// A staged file is about to be moved to a name that was free. A later one of the same picture takes
// the place of an earlier one.
struct Placing {
    Picture picture;   // its path: from the folder
    std::string run;   // whose staging folder it lies in
    std::string from;  // its name there
    FileFacts file;
    bool reserves = false;     // the name is made first, as an empty file
    std::int64_t written = 0;  // when it reserves: in nanoseconds since 1970
    std::uint64_t number = 0;  // {n}; 0: the name has none

    bool operator==(const Placing&) const = default;
};

struct PlacedAs {
    std::string id;
    bool operator==(const PlacedAs&) const = default;
};

struct ToldOf {
    std::string id;
    bool operator==(const ToldOf&) const = default;
};

// It will not be placed: its file has gone.
struct Dropped {
    std::string id;
    bool operator==(const Dropped&) const = default;
};

// Something that is no picture lies in a staging folder, and a problem has said so.
struct LeftThere {
    std::string run;
    std::string name;
    bool operator==(const LeftThere&) const = default;
};

using LedgerEntry = std::variant<Placing, PlacedAs, ToldOf, Dropped, LeftThere>;

// JSON, with its line feed.
std::string write_entry(const LedgerEntry& entry);

// Nothing for a line that is torn, garbage, or of a later version.
std::optional<LedgerEntry> read_entry(std::string_view line);

// An id as the ledger gives them: 16 hexadecimal digits.
std::string write_id(std::uint64_t number);
std::optional<std::uint64_t> read_id(std::string_view id);

}  // namespace host::pictures
