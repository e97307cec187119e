// Names without their endings, and which of them a folder has no more room for.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace host::pictures {

// "DSC00001" of "DSC00001.JPG".
std::string_view stem_of(std::string_view name);
// ".JPG" of "DSC00001.JPG"; empty when there is none.
std::string_view ending_of(std::string_view name);

// Equal for names that a file system may take for the same, because they differ in case only:
// Latin, Greek and Cyrillic letters.
std::string fold_case(std::string_view name);

struct FreeStem {
    std::string stem;
    std::uint64_t number = 1;  // of "-2", "-3", ...; 1: the stem alone
    int error = 0;             // an errno, or 0
};

// The name without its ending, or this with "-2", "-3", ..., whichever no file in the folder has,
// of whatever kind and case, and no number below `least`. Shortened where the disk takes no name as
// long.
FreeStem free_stem(int folder, std::string_view stem, std::string_view ending, std::uint64_t least);

// Does the folder have a file of this name, whatever its case?
bool is_taken(int folder, std::string_view name);

}  // namespace host::pictures
