// Any bytes as a record: reading one ends soon, what is a record is played to its end by a host
// that says what is expected, and each of its lines is written again as it stands.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "tests/worker/fuzz/require.h"
#include "tether/conversation/record_line.h"
#include "tether/replay/player.h"
#include "tether/replay/story.h"

namespace {

void write_again(std::string_view text) {
    const auto line = tether::read_record_line(text);
    if (!line) {
        return;
    }
    const std::string written = tether::written(*line);
    const auto again = tether::read_record_line(written);
    require(again && again->text == line->text && again->whole == line->whole &&
                again->at == line->at && again->mark == line->mark,
            "what is written is read again");
    require(written.find('\n') == std::string::npos, "a line is one");
}

void play(const replay::Run& run) {
    std::size_t said = 0;
    bool ended = false;
    replay::Player player(run, true, "/folder",
                          {[&](const replay::Step&, const std::string&) { ++said; },
                           [](const std::string& path, replay::Fate) {
                               require(path.rfind('/') + 1 < path.size(), "a picture has a name");
                           },
                           [](std::size_t, const std::string&) {},
                           [&](const replay::Ending&) {
                               ended = true;
                           }},
                          {});
    host::TimePoint now{};
    for (const replay::Step& step : run.steps) {
        if (step.kind == replay::Step::Kind::host_says) {
            player.hear(step.text);
        }
    }
    player.end_of_input();
    // Each round plays a step, or comes to the end.
    for (std::size_t round = 0; round < 4 * run.steps.size() + 4 && !ended; ++round) {
        const host::TimePoint next = player.play(now);
        if (next == host::TimePoint::max()) {
            break;
        }
        now = std::max(now, next);
    }
    require(ended || run.ending.kind == replay::Ending::Kind::hangs, "it comes to its end");
    // An answer for each fence that was not in the record, too.
    require(said <= 2 * run.steps.size(), "nothing is said out of nothing");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        write_again(std::string_view(text).substr(at, end - at));
        at = end + 1;
    }
    std::string error;
    const auto story = replay::read_story(text, error);
    require(story ? !story->runs.empty() : !error.empty(), "what is no record is said so");
    if (story) {
        for (const replay::Run& run : story->runs) {
            play(run);
        }
    }
    return 0;
}
