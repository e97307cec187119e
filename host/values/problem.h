// What went wrong, in words that can be shown. Its severity and advice belong to its code.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "host/values/problem_codes.h"

namespace host {

struct Problem {
    Code code{};
    std::string text;
    std::optional<std::uint32_t> sdk;   // the SDK's own code, shown as "0x00008402"
    std::optional<std::uint64_t> shot;  // the shot that it is about

    bool operator==(const Problem&) const = default;
};

// A code of the SDK as the worker writes it: "0x00008402".
std::string written_sdk_code(std::uint32_t code);

}  // namespace host
