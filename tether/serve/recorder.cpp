#include "tether/serve/recorder.h"

#include <algorithm>
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

constexpr const char* too_slow = "the disk was too slow for the lines";

// The record counts from the moment in which the camera was made, as its lines do.
TimePoint moment(host::Time at) {
    return TimePoint(std::chrono::duration_cast<host::Duration>(at));
}

}  // namespace

Recorder::Recorder(tether::Record& record, EndsEarly ends_early)
    : ends_early_(std::move(ends_early)), record_(record), thread_([this] { work(); }) {}

Recorder::~Recorder() {
    {
        const MutexLock lock(mutex_);
        ending_ = true;
    }
    changed_.notify_one();
    thread_.join();
}

void Recorder::add(const WireLine& line) {
    add(Entry{Entry::Kind::line, line});
}

void Recorder::add_client(const std::string& name, const std::string& version) {
    const auto now = std::chrono::duration_cast<host::Time>(host::Clock::now() - start_);
    add(Entry{Entry::Kind::client, {{}, name + " " + version, now}});
}

void Recorder::add(Entry entry) {
    bool given_up = false;
    {
        const MutexLock lock(mutex_);
        if (given_up_) {
            return;
        }
        const std::size_t bytes = entry.line.text.size() + overhead;
        given_up = given_up_ = bytes_ + bytes > most_bytes;
        if (!given_up) {
            bytes_ += bytes;
            entries_.push_back(std::move(entry));
        }
    }
    changed_.notify_one();
    // Here, and not on the thread: that one waits for the disk.
    if (given_up) {
        say(too_slow);
    }
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

std::optional<Recorder::Entry> Recorder::next() {
    const MutexLock lock(mutex_);
    while (entries_.empty() && !given_up_ && !ending_) {
        mutex_.wait(changed_);
    }
    if (entries_.empty()) {
        return std::nullopt;
    }
    Entry entry = std::move(entries_.front());
    entries_.pop_front();
    return entry;
}

bool Recorder::has_given_up() {
    const MutexLock lock(mutex_);
    return given_up_;
}

void Recorder::say(const std::string& why) {
    if (!said_.exchange(true)) {
        ends_early_(why);
    }
}

void Recorder::write(const Entry& entry, TimePoint at) {
    const WireLine& line = entry.line;
    if (entry.kind == Entry::Kind::client) {
        return record_.add_client(line.text, at);
    }
    switch (line.direction) {
        case WireLine::Direction::to_worker:
            return record_.add('>', line.text, at);
        case WireLine::Direction::from_worker:
            return record_.add('<', line.text, at);
        case WireLine::Direction::error:
            return record_.add_error(line.text, at);
    }
}

void Recorder::work() {
    TimePoint last{};
    while (const auto entry = next()) {
        last = std::max(last, moment(entry->line.at));
        write(*entry, last);
        if (!record_.trouble().empty()) {
            say(record_.trouble());
        }
        {
            const MutexLock lock(mutex_);
            bytes_ -= entry->line.text.size() + overhead;
        }
        written_.notify_all();
    }
    if (has_given_up()) {
        record_.note("the record ends here: " + std::string(too_slow), last);
    }
}

}  // namespace serve
