#pragma once

// Faults by name: how the next N calls of an SDK function, or every one of them, go wrong.

#include <optional>
#include <string>

#include "simulator/lock.h"
#include "simulator/sdk_surface.h"

namespace camera_sim {

class Words;

struct Response {
    std::optional<CrInt32u> answers;  // the result, in place of the camera's
    Duration late{};
    bool hangs = false;
    bool gives_null = false;     // no list, no array
    bool gives_nothing = false;  // a list or array that holds nothing
    bool gives_unreadable = false;
    std::optional<CrInt64u> gives;  // a property's value, a list's count
    bool lends = false;             // a list or array in spite of the result
};

struct Fault {
    std::string function;
    std::optional<CrInt32u> code;  // property or command; none: any
    Response response;
    std::uint64_t calls = 0;  // that it is still good for; 0: every one
};

// `next [N] FUNCTION [CODE] RESPONSE...` and `every FUNCTION [CODE] RESPONSE...`.
void add_next_fault(Words& words) SIM_REQUIRES(g_lock);
void add_standing_fault(Words& words) SIM_REQUIRES(g_lock);

// How this call goes wrong. One-shot faults come before standing ones, in the order they were
// named.
Response take_fault(const std::string& function, std::optional<CrInt32u> code) SIM_REQUIRES(g_lock);

}  // namespace camera_sim
