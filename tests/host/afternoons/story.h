// An afternoon as it was drawn: what happens, one event after the other. A story can be written
// down, read again, shortened, and plays the same way every time.
#pragma once

#include <chrono>
#include <iosfwd>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace afternoons {

// Who does it is told by the table of words in story.cpp.
enum class What {
    // The host.
    start,
    connect,
    disconnect,
    capture,       // number: patience
    capture_soon,  // number: how long it may wait for its turn
    cancel,        // number: which of the latest captures
    folder,
    destination,
    type,
    name,
    shutdown,
    deaf,
    hearing,
    // The camera.
    unplug,
    unplug_reconnecting,
    plug,
    vanish,
    card_out,
    card_in,
    card_full,
    dial,
    shutter,
    counter,
    swap,
    no_focus,
    focus,
    busy,
    refuses_destination,
    refuses_type,
    refuses_folder,
    takes_settings,
    unreadable,
    readable,
    answers,
    opening,
    exposure,
    transfer,
    named,
    error,
    caution,
    warning,
    disconnected,
    connected,
    look_fails,
    opening_refused,
    buffer_full,
    flap,
    storm,
    // The next file or pair.
    file_late,
    file_truncated,
    file_missing,
    file_twice,
    file_unreported,
    file_absolute,
    file_named,
    pair_reversed,
    pair_half,
    report,
    report_gap,
    // The worker's process.
    next_worker,
    worker_hangs,
    worker_dies,
    worker_stops,
    worker_cannot_be_killed,
    input_full,
    flood,
    lines,
    long_line,
    nonsense,
    // The disk.
    disk_stuck,
    disk_slow,
    disk_full,
    disk_read_only,
    disk_gone,
    // This side's own process, and the machine.
    brain_killed,
    brain_stops,
    sleep,
};

struct Event {
    std::chrono::milliseconds after{};  // the event before it
    What what{};
    int number = 0;

    bool operator==(const Event&) const = default;
};

struct Story {
    std::vector<Event> events;
};

struct Word {
    What what;
    std::string_view word;
    int numbers;  // 0: it has none; otherwise one from 0 to numbers - 1 is drawn
    int weight;   // how often it is drawn
    std::string_view means;
};

std::span<const Word> words();
std::string_view word(What what);

std::string to_text(const Event& event);
std::string to_text(const Story& story);

// Nothing, and why, when a line cannot be read. Lines that begin with "#" are for people.
std::optional<Story> read_story(std::istream& text, std::string& why);

}  // namespace afternoons
