// What a picture is to be called.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "host/values/time.h"

namespace host::pictures {

// What the words in braces stand for.
struct NameFacts {
    std::string camera;                 // the camera's own stem
    std::optional<std::uint64_t> shot;  // nothing: 0
    std::uint64_t number = 0;
    TimeOfDay at{};
};

struct Spot {
    std::string folder;  // below the one that pictures go to; empty: that one
    std::string stem;
};

// Of a template that why_no_name() has nothing to say about.
Spot spot_for(std::string_view name_template, const NameFacts& facts);

bool has_number(std::string_view name_template);

}  // namespace host::pictures
