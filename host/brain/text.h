// How lines are told apart.
#pragma once

#include <string_view>

namespace host::brain {

constexpr bool begins_with(std::string_view text, std::string_view beginning) {
    return text.substr(0, beginning.size()) == beginning;
}

}  // namespace host::brain
