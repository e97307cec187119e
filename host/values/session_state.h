// Where a session stands, as every host may see it at any time.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/values/problem.h"
#include "host/values/settings.h"

namespace host {

enum class State { down, starting, idle, opening, settling, ready, lost, closing, ending };

constexpr std::string_view word(State state) {
    constexpr std::string_view words[] = {"down",  "starting", "idle",    "opening", "settling",
                                          "ready", "lost",     "closing", "ending"};
    return words[static_cast<std::size_t>(state)];
}

struct SessionState {
    State state = State::down;
    std::optional<std::string> camera;  // its model name, while a session is up or being waited for
    bool simulated = false;
    std::string folder;  // the one in force
    Setting<SaveDestination> save_destination;
    Setting<FileType> file_type;
    unsigned int restarts = 0;            // workers that took the place of one that was lost
    std::vector<Problem> problems;        // those that stand, at most one of a code
    std::optional<Problem> waited_for{};  // what is no problem yet, and becomes one if it stays

    bool operator==(const SessionState&) const = default;
};

}  // namespace host
