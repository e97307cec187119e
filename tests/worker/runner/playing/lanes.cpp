#include "tests/worker/runner/playing/lanes.h"

#include <algorithm>
#include <set>

namespace transcript {
namespace {

constexpr std::chrono::seconds slack{5};
constexpr std::chrono::milliseconds clock_step{1};
constexpr std::chrono::seconds unhurried{15};

}  // namespace

Lanes::Lanes(const Block& block, host::TimePoint before) : block_(block) {
    ways_.push_back({std::vector<std::size_t>(block.lanes.size(), 0),
                     std::vector<host::TimePoint>(block.lanes.size(), before)});
}

bool Lanes::complete() const {
    return std::any_of(ways_.begin(), ways_.end(), [this](const Way& way) {
        for (std::size_t lane = 0; lane < block_.lanes.size(); ++lane) {
            if (way.next[lane] < block_.lanes[lane].size()) {
                return false;
            }
        }
        return true;
    });
}

bool Lanes::take(const host::Line& line) {
    std::vector<Way> onwards;
    std::set<std::vector<std::size_t>> reached;
    for (const Way& way : ways_) {
        for (std::size_t lane = 0; lane < block_.lanes.size(); ++lane) {
            if (way.next[lane] == block_.lanes[lane].size()) {
                continue;
            }
            const Expect& expect = block_.lanes[lane][way.next[lane]];
            if (line.text != expect.text ||
                !in_time(expect.not_before, way.happened[lane], line.at)) {
                continue;
            }
            Way onward = way;
            ++onward.next[lane];
            onward.happened[lane] = line.at;
            if (reached.insert(onward.next).second) {
                onwards.push_back(std::move(onward));
            }
        }
    }
    ways_ = std::move(onwards);
    return !ways_.empty();
}

std::string Lanes::awaited() const {
    std::set<std::string> texts;
    for (const Way& way : ways_) {
        for (std::size_t lane = 0; lane < block_.lanes.size(); ++lane) {
            if (way.next[lane] < block_.lanes[lane].size()) {
                texts.insert(block_.lanes[lane][way.next[lane]].text);
            }
        }
    }
    std::string awaited;
    for (const std::string& text : texts) {
        awaited += (awaited.empty() ? "< " : "  or  < ") + text;
    }
    return awaited;
}

host::Duration Lanes::patience() const {
    host::Duration longest{};
    for (const auto& lane : block_.lanes) {
        for (const Expect& expect : lane) {
            longest = std::max(longest, patience_for(expect.not_before));
        }
    }
    return longest;
}

bool in_time(const std::optional<Milliseconds>& not_before, host::TimePoint before,
             host::TimePoint at) {
    return !not_before ||
           (at - before >= *not_before - clock_step && at - before <= *not_before + slack);
}

host::Duration patience_for(const std::optional<Milliseconds>& not_before) {
    return not_before ? *not_before + slack : unhurried;
}

}  // namespace transcript
