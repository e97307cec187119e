#include "tether/serve/recorder.h"

#include <chrono>
#include <utility>

namespace serve {

using host::MutexLock;
using host::TimePoint;
using host::WireLine;

namespace {

constexpr std::size_t most_bytes = std::size_t{8} << 20;
// What a line takes beside its text.
constexpr std::size_t overhead = 64;

char mark(WireLine::Direction direction) {
    return direction == WireLine::Direction::to_worker     ? '>'
           : direction == WireLine::Direction::from_worker ? '<'
                                                           : '!';
}

// The record counts from the moment in which the camera was made, as its lines do.
TimePoint moment(host::Time at) {
    return TimePoint(std::chrono::duration_cast<host::Duration>(at));
}

}  // namespace

Recorder::Recorder(tether::Record& record) : record_(record), thread_([this] { work(); }) {}

Recorder::~Recorder() {
    {
        const MutexLock lock(mutex_);
        ending_ = true;
    }
    changed_.notify_one();
    thread_.join();
}

void Recorder::add(const WireLine& line) {
    {
        const MutexLock lock(mutex_);
        if (given_up_ || bytes_ + line.text.size() > most_bytes) {
            given_up_ = true;
            return;
        }
        bytes_ += line.text.size() + overhead;
        lines_.push_back(line);
    }
    changed_.notify_one();
}

bool Recorder::flush(TimePoint deadline) {
    const MutexLock lock(mutex_);
    while (bytes_ > 0) {
        if (!mutex_.wait_until(written_, deadline)) {
            return false;
        }
    }
    return true;
}

std::optional<WireLine> Recorder::next() {
    const MutexLock lock(mutex_);
    while (lines_.empty() && !given_up_ && !ending_) {
        mutex_.wait(changed_);
    }
    if (lines_.empty()) {
        return std::nullopt;
    }
    WireLine line = std::move(lines_.front());
    lines_.pop_front();
    return line;
}

bool Recorder::has_given_up() {
    const MutexLock lock(mutex_);
    return given_up_;
}

void Recorder::work() {
    TimePoint last{};
    while (const auto line = next()) {
        last = moment(line->at);
        record_.add(mark(line->direction), line->text, last);
        {
            const MutexLock lock(mutex_);
            bytes_ -= line->text.size() + overhead;
        }
        written_.notify_all();
    }
    if (has_given_up()) {
        record_.note("the record ends here: the disk was too slow for the lines", last);
    }
}

}  // namespace serve
