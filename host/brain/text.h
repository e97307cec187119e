// How much of a name is shown.
#pragma once

#include <cstddef>
#include <string_view>

namespace host::brain {

// The beginning of a name that somebody else chose, not cut in the middle of a character.
constexpr std::string_view beginning(std::string_view name, std::size_t most) {
    if (name.size() <= most) {
        return name;
    }
    constexpr std::size_t longest_character = 4;
    for (std::size_t end = most; end + longest_character > most && end > 0; --end) {
        if ((static_cast<unsigned char>(name[end]) & 0xC0U) != 0x80) {
            return name.substr(0, end);
        }
    }
    return name.substr(0, most);  // it has no characters
}

}  // namespace host::brain
