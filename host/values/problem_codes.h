// Everything that can be wrong, by the words on the wire. What each means: problem_texts.h.
// Written by catalogue/generate: change catalogue/problems.json.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace host {

enum class Severity { warning, error };

enum class Code {
    worker_missing,
    worker_not_starting,
    worker_gone,
    worker_hangs,
    worker_floods,
    sdk_not_initialised,
    camera_not_found,
    camera_no_answer,
    camera_refused,
    camera_lost,
    camera_error,
    not_connected,
    destination_not_taken,
    file_type_not_taken,
    folder_not_taken,
    folder_gone,
    folder_not_permitted,
    folder_in_use,
    card_missing,
    no_picture,
    half_missing,
    picture_damaged,
    picture_not_there,
    picture_outside,
    picture_not_placed,
    disk_nearly_full,
    busy,
    cancelled,
    expired,
};

struct CodeEntry {
    Code code;
    std::string_view word;
    Severity severity;
};

// In the order of the enumeration.
inline constexpr std::array<CodeEntry, 29> codes{{
    {Code::worker_missing, "worker-missing", Severity::error},
    {Code::worker_not_starting, "worker-not-starting", Severity::error},
    {Code::worker_gone, "worker-gone", Severity::error},
    {Code::worker_hangs, "worker-hangs", Severity::error},
    {Code::worker_floods, "worker-floods", Severity::error},
    {Code::sdk_not_initialised, "sdk-not-initialised", Severity::error},
    {Code::camera_not_found, "camera-not-found", Severity::error},
    {Code::camera_no_answer, "camera-no-answer", Severity::error},
    {Code::camera_refused, "camera-refused", Severity::error},
    {Code::camera_lost, "camera-lost", Severity::error},
    {Code::camera_error, "camera-error", Severity::error},
    {Code::not_connected, "not-connected", Severity::error},
    {Code::destination_not_taken, "destination-not-taken", Severity::warning},
    {Code::file_type_not_taken, "file-type-not-taken", Severity::warning},
    {Code::folder_not_taken, "folder-not-taken", Severity::error},
    {Code::folder_gone, "folder-gone", Severity::error},
    {Code::folder_not_permitted, "folder-not-permitted", Severity::error},
    {Code::folder_in_use, "folder-in-use", Severity::error},
    {Code::card_missing, "card-missing", Severity::warning},
    {Code::no_picture, "no-picture", Severity::error},
    {Code::half_missing, "half-missing", Severity::error},
    {Code::picture_damaged, "picture-damaged", Severity::error},
    {Code::picture_not_there, "picture-not-there", Severity::error},
    {Code::picture_outside, "picture-outside", Severity::error},
    {Code::picture_not_placed, "picture-not-placed", Severity::error},
    {Code::disk_nearly_full, "disk-nearly-full", Severity::warning},
    {Code::busy, "busy", Severity::error},
    {Code::cancelled, "cancelled", Severity::warning},
    {Code::expired, "expired", Severity::warning},
}};

constexpr std::string_view word(Code code) {
    return codes[static_cast<std::size_t>(code)].word;
}

constexpr Severity severity(Code code) {
    return codes[static_cast<std::size_t>(code)].severity;
}

}  // namespace host
