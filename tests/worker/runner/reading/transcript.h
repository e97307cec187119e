// A transcript as it was read: what is set up, and the steps in their order.
#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace transcript {

using Milliseconds = std::chrono::milliseconds;

struct Place {
    std::filesystem::path file;
    int line = 0;
};

// Bytes for the worker's input, the line feed included.
struct Send {
    std::string bytes;
};

// The next line of output.
struct Expect {
    std::string text;
    std::optional<Milliseconds> not_before;
};

// Lines of several threads: each lane in order, the lanes interleaved anyhow.
struct Block {
    std::vector<std::vector<Expect>> lanes;
};

// Something happens to the camera.
struct Control {
    std::string line;
};

struct Call {
    std::string text;
    std::optional<Milliseconds> pause;  // between the end of the call before it and its start
    std::optional<std::string> result;
};

// Everything asked of the camera since the last such step.
struct Calls {
    std::vector<Call> calls;
    bool with_reads = false;  // property reads and ReleaseEnumeration count too
};

struct CloseInput {};
struct CloseOutput {};

struct Signal {
    int number;
};

struct Exits {
    int status = 0;
    std::optional<Milliseconds> within;
    std::optional<Milliseconds> not_before;
};

// A worker that hangs: for so long it writes nothing and runs on, and only SIGKILL ends it.
struct Killed {
    Milliseconds after;
};

struct Step {
    Place place;
    std::string written;  // as it stands in the file
    std::variant<Send, Expect, Block, Control, Calls, CloseInput, CloseOutput, Signal, Exits,
                 Killed>
        action;

    // Whether the worker is gone behind this step.
    bool is_end() const {
        return std::holds_alternative<Exits>(action) || std::holds_alternative<Killed>(action);
    }
};

struct Transcript {
    std::filesystem::path file;
    std::string purpose;  // its first sentence
    std::vector<std::string> scene;
    std::vector<std::string> arguments;
    std::vector<std::pair<std::string, std::string>> environment;
    bool cold = false;  // the opening lines and calls are the transcript's own
    bool reads =
        false;  // its own calls are compared with their reads; those of included files never are
    bool no_adapter = false;  // the bundle has no USB transport adapter
    bool slow = false;
    std::vector<Step> steps;
};

}  // namespace transcript
