// One capture, from the request to its last file.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/values/picture.h"
#include "host/values/problem.h"

namespace host {

// fired: under way. complete: every file that is due is there and whole. incomplete: some are.
// none: no file came. refused: CAPTURE was never sent.
enum class ShotStatus { fired, complete, incomplete, none, refused };

constexpr std::string_view word(ShotStatus status) {
    switch (status) {
        case ShotStatus::fired:
            return "fired";
        case ShotStatus::complete:
            return "complete";
        case ShotStatus::incomplete:
            return "incomplete";
        case ShotStatus::none:
            return "none";
        case ShotStatus::refused:
            break;
    }
    return "refused";
}

struct Shot {
    std::uint64_t number = 0;  // from 1 on, never used twice in one folder
    std::string tag;
    ShotStatus status = ShotStatus::fired;
    std::string fired_at;  // ISO 8601 in UTC; empty when it was never fired
    std::vector<Picture> pictures;
    std::vector<Problem> problems;

    bool operator==(const Shot&) const = default;
};

}  // namespace host
