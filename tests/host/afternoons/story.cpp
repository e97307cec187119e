#include "tests/host/afternoons/story.h"

#include <algorithm>
#include <array>
#include <istream>
#include <sstream>

namespace afternoons {

namespace {

constexpr auto all_words = std::to_array<Word>({
    {What::start, "start", 0, 4, "the host asks for a worker"},
    {What::connect, "connect", 0, 30, "the host asks for a session"},
    {What::disconnect, "disconnect", 0, 10, "the host lets the camera go"},
    {What::capture, "capture", 7, 120, "the host asks for a picture, with that patience"},
    {What::capture_soon, "capture-soon", 4, 20, "the same, to be fired soon or not at all"},
    {What::cancel, "cancel", 4, 10, "the host cancels one of its latest captures"},
    {What::folder, "folder", 8, 18, "the host asks for another folder"},
    {What::destination, "destination", 3, 12, "the host asks for another destination"},
    {What::type, "type", 4, 12, "the host asks for another file type"},
    {What::name, "name", 3, 3, "the host asks for other names"},
    {What::shutdown, "shutdown", 4, 4, "the host asks for the end"},
    {What::deaf, "deaf", 0, 3, "nobody hears of pictures from now on"},
    {What::hearing, "hearing", 0, 3, "somebody hears of pictures again"},
    {What::unplug, "unplug", 0, 14, "the cable is pulled"},
    {What::unplug_reconnecting, "unplug-reconnecting", 0, 14, "the SDK waits for the camera"},
    {What::plug, "plug", 0, 30, "the cable is back"},
    {What::vanish, "vanish", 0, 4, "the camera is gone and the SDK says nothing"},
    {What::card_out, "card-out", 0, 8, "the memory card is taken out"},
    {What::card_in, "card-in", 0, 8, "the memory card is put in"},
    {What::card_full, "card-full", 0, 4, "the memory card is full"},
    {What::dial, "dial", 5, 16, "a person turns the dial"},
    {What::shutter, "shutter", 0, 20, "a person presses the button on the body"},
    {What::counter, "counter", 3, 4, "the camera's counter is set"},
    {What::swap, "swap", 0, 4, "another camera hangs on the cable"},
    {What::no_focus, "no-focus", 0, 6, "the camera does not find focus"},
    {What::focus, "focus", 0, 6, "it finds it again"},
    {What::busy, "busy", 4, 6, "the camera is too busy for settings, for so long"},
    {What::refuses_destination, "refuses-destination", 0, 4, "it takes no destination"},
    {What::refuses_type, "refuses-type", 0, 4, "it takes no file type"},
    {What::refuses_folder, "refuses-folder", 0, 3, "the SDK takes no folder"},
    {What::takes_settings, "takes-settings", 0, 5, "settings are taken again"},
    {What::unreadable, "unreadable", 2, 3, "the card or the type cannot be read"},
    {What::readable, "readable", 0, 3, "both can be read again"},
    {What::answers, "answers", 5, 8, "how the camera answers the next openings"},
    {What::opening, "opening", 5, 6, "how long an opening takes"},
    {What::exposure, "exposure", 4, 6, "how long an exposure takes"},
    {What::transfer, "transfer", 5, 8, "how long a file takes"},
    {What::named, "named", 9, 8, "the camera's model name"},
    {What::error, "error", 0, 4, "the camera reports an error"},
    {What::caution, "caution", 0, 3, "it shows a caution"},
    {What::warning, "warning", 0, 3, "the SDK warns"},
    {What::disconnected, "disconnected", 0, 4, "the SDK says that the camera went away"},
    {What::connected, "connected", 0, 3, "the SDK says that the camera is there"},
    {What::look_fails, "look-fails", 2, 3, "the SDK cannot look for cameras, so often"},
    {What::opening_refused, "opening-refused", 2, 3, "the SDK refuses to open it, so often"},
    {What::buffer_full, "buffer-full", 0, 4, "the camera's buffer has no room for a shot"},
    {What::flap, "flap", 3, 4, "the cable has a loose contact"},
    {What::storm, "storm", 2, 2, "the camera tells of changes without end"},
    {What::file_late, "file-late", 5, 16, "the next file is late"},
    {What::file_truncated, "file-truncated", 0, 8, "the next file is half a file"},
    {What::file_missing, "file-missing", 0, 8, "the next file is reported and not there"},
    {What::file_twice, "file-twice", 3, 10, "the next file is reported again"},
    {What::file_unreported, "file-unreported", 0, 5, "the next file is not reported"},
    {What::file_absolute, "file-absolute", 0, 4, "the next file is reported by its path"},
    {What::file_named, "file-named", 14, 16, "the next file has an odd name"},
    {What::pair_reversed, "pair-reversed", 0, 6, "of the next pair the JPEG comes first"},
    {What::pair_half, "pair-half", 0, 6, "of the next pair one half comes"},
    {What::report, "report", 8, 8, "a file is reported out of nowhere"},
    {What::report_gap, "report-gap", 4, 3, "how far a report is behind its log line"},
    {What::next_worker, "next-worker", 10, 12, "what the next worker is like"},
    {What::worker_hangs, "worker-hangs", 5, 8, "the worker's main thread hangs"},
    {What::worker_dies, "worker-dies", 3, 10, "the worker dies"},
    {What::worker_stops, "worker-stops", 4, 5, "the worker stands still"},
    {What::worker_cannot_be_killed, "worker-cannot-be-killed", 0, 2, "SIGKILL does not end it"},
    {What::input_full, "input-full", 0, 2, "the worker's input is full"},
    {What::flood, "flood", 0, 3, "the worker writes more than can be read"},
    {What::lines, "lines", 5, 2, "the worker writes many lines of one kind"},
    {What::long_line, "long-line", 0, 2, "the worker writes a line that is too long"},
    {What::nonsense, "nonsense", 10, 8, "the worker writes a line that nobody expects"},
    {What::disk_stuck, "disk-stuck", 5, 8, "the disk does not answer, for so long"},
    {What::disk_slow, "disk-slow", 4, 5, "how long the disk takes for everything"},
    {What::disk_full, "disk-full", 4, 4, "the disk is full, for so long"},
    {What::disk_read_only, "disk-read-only", 4, 4, "the disk is read only, for so long"},
    {What::disk_gone, "disk-gone", 4, 5, "the folder is moved away, for so long"},
    {What::brain_killed, "brain-killed", 4, 10, "this process is killed, and started again"},
    {What::brain_stops, "brain-stops", 5, 8, "this process stands still"},
    {What::sleep, "sleep", 3, 5, "the machine sleeps"},
});

}  // namespace

std::span<const Word> words() {
    return all_words;
}

namespace {

const Word& entry(What what) {
    return *std::find_if(words().begin(), words().end(),
                         [what](const Word& one) { return one.what == what; });
}

}  // namespace

std::string_view word(What what) {
    return entry(what).word;
}

std::string to_text(const Event& event) {
    const Word& is = entry(event.what);
    std::string text = "+" + std::to_string(event.after.count()) + "ms " + std::string(is.word);
    if (is.numbers > 0) {
        text += " " + std::to_string(event.number);
    }
    return text;
}

std::string to_text(const Story& story) {
    std::string text;
    for (const Event& event : story.events) {
        std::string line = to_text(event);
        line.resize(std::max<std::size_t>(line.size() + 1, 34), ' ');
        text += line + "# " + std::string(entry(event.what).means) + "\n";
    }
    return text;
}

std::optional<Story> read_story(std::istream& text, std::string& why) {
    Story story;
    std::string line;
    for (int number = 1; std::getline(text, line); ++number) {
        line = line.substr(0, line.find('#'));
        std::istringstream fields(line);
        char plus = 0;
        long after = 0;
        std::string unit;
        std::string name;
        if (!(fields >> plus)) {
            continue;
        }
        const auto found = [&] {
            return std::find_if(words().begin(), words().end(),
                                [&](const Word& one) { return one.word == name; });
        };
        why = "line " + std::to_string(number) + ": " + line;
        if (plus != '+' || !(fields >> after) || after < 0 || !(fields >> unit >> name) ||
            unit != "ms" || found() == words().end()) {
            return std::nullopt;
        }
        Event event{std::chrono::milliseconds(after), found()->what, 0};
        if (found()->numbers > 0 &&
            (!(fields >> event.number) || event.number < 0 || event.number >= found()->numbers)) {
            return std::nullopt;
        }
        std::string rest;
        if (fields >> rest) {
            return std::nullopt;
        }
        story.events.push_back(event);
    }
    why.clear();
    return story;
}

}  // namespace afternoons
