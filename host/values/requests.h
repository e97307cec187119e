// What a host asks of a session, and what it is answered: each request exactly once.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "host/values/session_state.h"
#include "host/values/shot.h"
#include "host/values/time.h"

namespace host {

using RequestId = std::uint64_t;

// Brings the folder and the worker up, without a camera. Answered by SessionState once the worker
// is ready for commands, by the Problem that stands in the way otherwise, or after 30 s.
struct Start {};

// Answered by SessionState once the session is ready; by the Problem that stands in the way after
// 60 s. The session goes on trying.
struct Connect {};

// Answered by SessionState. Nothing is tried again until the next Connect.
struct Disconnect {};

// Answered by the Shot when it is over; by a Problem only when the session has never been ready.
struct Capture {
    std::optional<Time> patience;     // how long files are waited for, 0.1 s to 3600 s
    std::optional<Time> expires;      // not fired by then: refused; up to 3600 s
    std::optional<std::string> name;  // a template for the files of this shot
    std::string tag;
};

// Answered by Done, also when no shot has that tag.
struct Cancel {
    std::string tag;
};

// Answered by SessionState when all is in force, or when a problem says what is not.
struct Configure {
    std::optional<std::string> folder;
    std::optional<SaveDestination> save_destination;
    std::optional<FileType> file_type;
    std::optional<std::string> name;
};

// Answered by Ended. After it nothing else is asked of the camera.
struct Shutdown {
    std::optional<Time> patience;  // for files that are on their way
};

using Request = std::variant<Start, Connect, Disconnect, Capture, Cancel, Configure, Shutdown>;

struct Done {
    bool operator==(const Done&) const = default;
};

enum class WorkerEnd { quit, input, sigterm, sigkill, gone };

constexpr std::string_view word(WorkerEnd by) {
    constexpr std::string_view words[] = {"quit", "input", "sigterm", "sigkill", "gone"};
    return words[static_cast<std::size_t>(by)];
}

struct Ended {
    WorkerEnd worker = WorkerEnd::gone;  // gone: there was none, or it had ended by itself
    int status = 0;                      // a signal n counts as 128 + n

    bool operator==(const Ended&) const = default;
};

using Answer = std::variant<SessionState, Shot, Done, Ended, Problem>;

}  // namespace host
