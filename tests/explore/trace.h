#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tests/explore/time.h"

// What can be seen of the worker from outside, in the order it happened: what the host wrote and
// read, what the camera was asked and said, signals, and the end.
namespace explore {

// Texts are kept once for the whole session of exploring, so that two are equal when their numbers
// are.
using Text = std::uint32_t;
inline constexpr Text unreadable_text = 1;  // "unreadable"
Text keep(std::string_view text);
const std::string& text_of(Text text);

enum class Call : std::uint8_t {
    init,
    get_sdk_version,
    enum_camera_objects,
    release_enumeration,
    connect,
    disconnect,
    release_device,
    get_properties,
    release_properties,
    set_property,
    send_command,
    set_save_info,
    release,
};
inline constexpr int call_count = 13;
const char* name_of(Call call);

enum class Callback : std::uint8_t {
    connected,
    disconnected,
    warning,
    error,
    properties,
    download,
};

enum class Kind : std::uint8_t {
    host_wrote,    // text
    host_closed,   // standard input
    host_stopped,  // reading standard output: the pipe is full
    host_reads_again,
    signal,           // number
    line,             // text: a line reached the host
    call_begins,      // which: Call; number, value: its arguments; text
    call_ends,        // which: Call; number: result; value: what it gave; who: 1 when it lent it
    callback_begins,  // which: Callback; number; text; who: the SDK's thread
    callback_ends,    // who
    exits,            // number: status; from exit
    exits_at_once,    // number: status; from _exit
    killed,           // number: signal
    clock_jumps,      // the clock moves on although some thread could have gone on
};

struct Event {
    Kind kind;
    std::uint8_t which = 0;
    std::uint8_t who = 0;
    Text text = 0;
    std::uint64_t number = 0;
    std::uint64_t value = 0;
    Time time = 0;

    bool operator==(const Event&) const = default;
};

extern std::vector<Event> trace;

void record(Event event);

// The event as a person would write it down.
std::string describe(const Event& event);

}  // namespace explore
