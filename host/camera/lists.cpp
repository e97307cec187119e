#include "host/camera/lists.h"

#include <utility>

namespace host {
namespace {

constexpr std::size_t most_waiting = 64;

// A disk that has nothing else to do answers in a few milliseconds; one that is busy with a large
// picture in some hundred.
constexpr std::chrono::milliseconds patience{900};

Problem stuck() {
    return {Code::folder_gone, "The disk of the folder does not answer.", {}, {}};
}

// Such as while another program has it. An empty list would say that there are no pictures.
Problem not_open() {
    return {Code::folder_gone, "The folder is not open.", {}, {}};
}

}  // namespace

std::optional<std::uint64_t> Lists::ask(std::function<void(const PicturesAnswer&)> answered,
                                        Time now) {
    if (at_the_disk_ >= most_waiting) {
        answered(Problem{Code::busy, "Too many lists are waiting for the disk.", {}, {}});
        return std::nullopt;
    }
    ++at_the_disk_;
    waiting_[++last_] = {std::move(answered), now + patience};
    return last_;
}

void Lists::answer(const Listed& listed) {
    --at_the_disk_;
    const auto found = waiting_.extract(listed.number);
    if (found) {
        if (listed.pictures) {
            found.mapped().answered(*listed.pictures);
        } else {
            found.mapped().answered(not_open());
        }
    }
}

void Lists::strike(Time now) {
    while (!waiting_.empty() && waiting_.begin()->second.deadline <= now) {
        waiting_.extract(waiting_.begin()).mapped().answered(stuck());
    }
}

Time Lists::wake_at() const {
    return waiting_.empty() ? Time::max() : waiting_.begin()->second.deadline;
}

}  // namespace host
