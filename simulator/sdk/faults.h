#pragma once

// Faults by name: how the next N calls of an SDK function, or every one of them, go wrong; likewise
// the files of the shots and their pairs, under the names "file" and "pair".

#include <optional>
#include <string>

#include "simulator/sdk/lock.h"
#include "simulator/sdk/surface.h"

namespace camera_sim {

struct Response {
    // Of calls.
    std::optional<CrInt32u> answers;  // the result, in place of the camera's
    Duration late{};                  // of files too
    bool hangs = false;
    bool gives_null = false;     // no list, no array
    bool gives_nothing = false;  // a list or array that holds nothing
    bool gives_unreadable = false;
    std::optional<CrInt64u> gives;  // a property's value, a list's count
    bool lends = false;             // a list or array in spite of the result

    // Of files.
    bool truncated = false;
    bool missing = false;
    bool twice = false;
    bool absolute = false;
    std::optional<std::optional<std::string>> named;  // the name that is reported, or null
    std::optional<CrInt32u> number;                   // the second argument of the report

    // Of pairs.
    bool reversed = false;
    bool half = false;
};

struct Fault {
    std::string subject;           // a function, "file" or "pair"
    std::optional<CrInt32u> code;  // property or command; none: any
    Response response;
    std::uint64_t times = 0;  // that it is still good for; 0: every one
};

// How this one goes wrong. One-shot faults come before standing ones, in the order they were named.
Response take_fault(const std::string& subject, std::optional<CrInt32u> code = std::nullopt)
    SIM_REQUIRES(g_lock);

}  // namespace camera_sim
