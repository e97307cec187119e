#include "tether/conversation/events.h"

#include <array>
#include <thread>
#include <unistd.h>
#include <utility>

#include "tether/conversation/typed_lines.h"
#include "tether/live/signals.h"

namespace tether {

using host::Clock;
using host::MutexLock;

namespace {

// Beyond this, lines wait where they come from: in the worker's stream, which is bounded, or in the
// pipe that is typed into.
constexpr std::size_t most_waiting = 1024;
constexpr std::size_t most_waiting_bytes = std::size_t{1024} * 1024;

// A process that the worker has left behind may hold its output open for ever. Only lines wake up
// whoever waits for them, so the exit is looked at now and then.
constexpr std::chrono::seconds look_at_exit_every{1};
constexpr std::chrono::seconds time_for_the_rest{2};

}  // namespace

void Events::post(Event event) {
    {
        const MutexLock lock(mutex_);
        waiting_bytes_ += event.text.size();
        waiting_.push_back(std::move(event));
    }
    posted_.notify_one();
}

void Events::post_line(Event event) {
    {
        const MutexLock lock(mutex_);
        while (waiting_.size() >= most_waiting || waiting_bytes_ >= most_waiting_bytes) {
            mutex_.wait(taken_);
        }
        waiting_bytes_ += event.text.size();
        waiting_.push_back(std::move(event));
    }
    posted_.notify_one();
}

std::optional<Event> Events::next(host::TimePoint deadline) {
    std::optional<Event> event;
    {
        const MutexLock lock(mutex_);
        while (waiting_.empty()) {
            if (!mutex_.wait_until(posted_, deadline)) {
                break;
            }
        }
        if (waiting_.empty()) {
            return std::nullopt;
        }
        event = std::move(waiting_.front());
        waiting_.pop_front();
        waiting_bytes_ -= event->text.size();
    }
    taken_.notify_all();
    return event;
}

Events& events() {
    static Events& instance = *new Events;
    return instance;
}

void post_interrupts() {
    act_on_signals(ending_signals(), [](int) {
        events().post({Event::Kind::interrupted, {}, Clock::now()});
    });
}

void post_typed_lines() {
    std::thread([] {
        TypedLines typed([](std::string line) {
            events().post_line({Event::Kind::typed, std::move(line), Clock::now()});
        });
        std::array<char, 4096> buffer;
        for (ssize_t count; (count = ::read(STDIN_FILENO, buffer.data(), buffer.size())) > 0;) {
            typed.add({buffer.data(), static_cast<std::size_t>(count)});
        }
        typed.finish();
        events().post({Event::Kind::typing_ended, {}, Clock::now()});
    }).detach();
}

void post_worker_lines(host::WorkerProcess& worker) {
    std::thread([&worker] {
        while (!worker.output_ended()) {
            if (const auto line = worker.next_line(host::after(look_at_exit_every))) {
                events().post_line({Event::Kind::worker_line, line->text, line->at});
            } else if (const auto exit = worker.await_exit(Clock::now());
                       exit && Clock::now() - exit->at > time_for_the_rest) {
                worker.close_output();
            }
        }
        events().post({Event::Kind::worker_ended, {}, Clock::now()});
    }).detach();
}

}  // namespace tether
