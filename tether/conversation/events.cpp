#include "tether/conversation/events.h"

#include <array>
#include <signal.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace tether {

using host::Clock;

void Events::post(Event event) {
    {
        const std::lock_guard lock(mutex_);
        waiting_.push_back(std::move(event));
    }
    posted_.notify_one();
}

std::optional<Event> Events::next(host::TimePoint deadline) {
    std::unique_lock lock(mutex_);
    posted_.wait_until(lock, deadline, [this] { return !waiting_.empty(); });
    if (waiting_.empty()) {
        return std::nullopt;
    }
    Event event = std::move(waiting_.front());
    waiting_.pop_front();
    return event;
}

Events& events() {
    static Events& instance = *new Events;
    return instance;
}

void post_interrupts() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGHUP);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::thread([signals] {
        for (int number = 0; sigwait(&signals, &number) == 0;) {
            events().post({Event::Kind::interrupted, {}, Clock::now()});
        }
    }).detach();
}

void post_typed_lines() {
    std::thread([] {
        std::string typed;
        std::array<char, 4096> buffer;
        for (ssize_t count; (count = read(STDIN_FILENO, buffer.data(), buffer.size())) > 0;) {
            typed.append(buffer.data(), static_cast<std::size_t>(count));
            for (std::size_t end; (end = typed.find('\n')) != std::string::npos;) {
                events().post({Event::Kind::typed, typed.substr(0, end), Clock::now()});
                typed.erase(0, end + 1);
            }
        }
        if (!typed.empty()) {
            events().post({Event::Kind::typed, typed, Clock::now()});
        }
        events().post({Event::Kind::typing_ended, {}, Clock::now()});
    }).detach();
}

void post_worker_lines(host::WorkerProcess& worker) {
    std::thread([&worker] {
        while (const auto line = worker.next_line(host::TimePoint::max())) {
            events().post({Event::Kind::worker_line, line->text, line->at});
        }
        events().post({Event::Kind::worker_ended, {}, Clock::now()});
    }).detach();
}

}  // namespace tether
