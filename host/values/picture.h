// One file that a camera sent, in its place in the folder.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace host {

// "other" is what nobody asked for, such as a movie.
enum class Kind { raw, developed, other };
enum class Format { jpeg, heif, arw, dng, other };

constexpr std::string_view word(Kind kind) {
    return kind == Kind::raw ? "raw" : kind == Kind::developed ? "developed" : "other";
}

constexpr std::string_view word(Format format) {
    switch (format) {
        case Format::jpeg:
            return "jpeg";
        case Format::heif:
            return "heif";
        case Format::arw:
            return "arw";
        case Format::dng:
            return "dng";
        case Format::other:
            break;
    }
    return "other";
}

struct Picture {
    std::string id;                     // the same whenever this picture is told
    std::optional<std::uint64_t> shot;  // nothing: unasked, or in doubt
    std::string tag;                    // of the shot
    std::string pair;                   // the same for both halves; never empty
    Kind kind = Kind::other;
    Format format = Format::other;
    std::string path;         // absolute, in the folder; bytes as they are
    std::string camera_name;  // as the camera called it, with its ending
    std::uint64_t bytes = 0;
    bool whole = false;
    std::string at;                                  // placed, ISO 8601 in UTC
    std::optional<std::chrono::milliseconds> after;  // from CAPTURE to the worker's report
    bool recovered = false;                          // found by a sweep, not by a report

    bool operator==(const Picture&) const = default;
};

}  // namespace host
