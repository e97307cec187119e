#include "tests/host/afternoons/shortening.h"

#include <utility>

#include "tests/host/afternoons/afternoon.h"

namespace afternoons {
namespace {

bool still_fails(const Story& story, const std::string& guarantee) {
    const Outcome outcome = play(story);
    return outcome.failure && outcome.failure->guarantee == guarantee;
}

// Without `many` events from `first` on; what follows comes when it came, or as early as it can.
bool drop(Story& story, std::size_t first, std::size_t many, const std::string& guarantee) {
    Story less;
    std::chrono::milliseconds skipped{};
    for (std::size_t index = 0; index < story.events.size(); ++index) {
        Event event = story.events[index];
        if (index >= first && index < first + many) {
            skipped += event.after;
            continue;
        }
        event.after += std::exchange(skipped, {});
        less.events.push_back(event);
    }
    if (!still_fails(less, guarantee)) {
        return false;
    }
    story = less;
    return true;
}

bool change(Story& story, std::size_t index, const Event& to, const std::string& guarantee) {
    Story other = story;
    if (other.events[index] == to) {
        return false;
    }
    other.events[index] = to;
    if (!still_fails(other, guarantee)) {
        return false;
    }
    story = other;
    return true;
}

}  // namespace

Story shorten(const Story& long_story, const std::string& guarantee) {
    Story story = long_story;
    for (bool shorter = true; shorter;) {
        shorter = false;
        for (std::size_t many = story.events.size() / 2; many > 0; many /= 2) {
            for (std::size_t first = 0; first + many <= story.events.size();) {
                if (drop(story, first, many, guarantee)) {
                    shorter = true;
                } else {
                    first += many;
                }
            }
        }
        for (std::size_t index = 0; index < story.events.size(); ++index) {
            for (const long after : {0L, 1L, 10L, 100L, 1000L, 3000L, 10000L}) {
                Event event = story.events[index];
                if (event.after.count() > after) {
                    event.after = std::chrono::milliseconds(after);
                    shorter = change(story, index, event, guarantee) || shorter;
                }
            }
            Event event = story.events[index];
            event.number = 0;
            shorter = change(story, index, event, guarantee) || shorter;
        }
    }
    return story;
}

}  // namespace afternoons
