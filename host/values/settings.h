// What a host can ask of a session, and the words for it on both wires.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "host/values/time.h"

namespace host {

enum class SaveDestination { disk, card, both };
enum class FileType { jpeg, raw, both, other };  // other: in force only, such as RAW+HEIF

constexpr std::string_view word(SaveDestination destination) {
    return destination == SaveDestination::disk   ? "disk"
           : destination == SaveDestination::card ? "card"
                                                  : "both";
}

constexpr std::string_view word(FileType type) {
    switch (type) {
        case FileType::jpeg:
            return "jpeg";
        case FileType::raw:
            return "raw";
        case FileType::both:
            return "both";
        case FileType::other:
            break;
    }
    return "other";
}

// Nothing for any other word, whatever its case.
constexpr std::optional<SaveDestination> save_destination_of(std::string_view text) {
    for (const auto value : {SaveDestination::disk, SaveDestination::card, SaveDestination::both}) {
        if (word(value) == text) {
            return value;
        }
    }
    return std::nullopt;
}

constexpr std::optional<FileType> file_type_of(std::string_view text) {
    for (const auto value : {FileType::jpeg, FileType::raw, FileType::both, FileType::other}) {
        if (word(value) == text) {
            return value;
        }
    }
    return std::nullopt;
}

// Nothing asked: the camera's own. Nothing in force: not known, because no session is up.
template <typename Value>
struct Setting {
    std::optional<Value> asked;
    std::optional<Value> in_force;

    bool operator==(const Setting&) const = default;
};

// What a session begins with.
struct Wishes {
    std::string folder = "shots";
    SaveDestination save_destination = SaveDestination::disk;
    std::optional<FileType> file_type;  // nothing: the camera's own
    std::string name;                   // a template for file names; empty: "{camera}"
    Time patience = std::chrono::seconds(20);
    Time expires = std::chrono::seconds(5);
};

}  // namespace host
