#include "tether/tap/passing.h"

#include <array>
#include <cerrno>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace tap {

using host::Clock;

namespace {

// How often is looked whether the host has read what waits for it; nobody tells.
constexpr int look_every_ms = 100;

}  // namespace

Passing::Passing(pid_t worker, host::Descriptor input, host::Descriptor output,
                 const Signals& signals, NoticeWriter& notices)
    : worker_(worker),
      signals_(signals),
      notices_(notices),
      to_worker_(host::Descriptor(STDIN_FILENO), std::move(input)),
      from_worker_(std::move(output), host::Descriptor(STDOUT_FILENO)),
      unread_(STDOUT_FILENO) {}

int Passing::pass() {
    while (!is_over()) {
        step();
    }
    return *ended_;
}

// All that the worker wrote before its end lies in the pipe by then. Whoever else holds that pipe
// open, such as a process that it left behind, is not waited for; nor is a host that asks for the
// end and does not read.
bool Passing::is_over() const {
    if (!ended_) {
        return false;
    }
    return from_worker_.waiting() > 0 ? told_to_end_ && looked_at(from_worker_.sink()) == 0
                                      : looked_at(from_worker_.source()) == 0;
}

void Passing::step() {
    std::array<pollfd, 6> wanted{to_worker_.source(), to_worker_.sink(),  from_worker_.source(),
                                 from_worker_.sink(), signals_.arrival(), notices_.room()};
    if (poll(wanted.data(), wanted.size(), gauge_.wants_looks() ? look_every_ms : -1) < 0) {
        return;
    }
    pass_output(wanted[2].revents, wanted[3].revents);
    pass_input(wanted[0].revents, wanted[1].revents);
    if (wanted[4].revents != 0) {
        take_signals();
    }
    if (wanted[5].revents != 0) {
        notices_.flush();
    }
}

void Passing::pass_input(short at_source, short at_sink) {
    const Step step = to_worker_.step(at_source, at_sink);
    const auto now = Clock::now();
    if (!step.bytes.empty()) {
        notices_.tell(Kind::to_worker, now, 0, step.bytes);
    }
    if (step.source_ended) {
        notices_.tell(Kind::input_ended, now);
    }
    if (step.sink_gone) {
        notices_.tell(Kind::worker_deaf, now);
    }
}

void Passing::pass_output(short at_source, short at_sink) {
    look_whether_it_is_read();
    const Step step = from_worker_.step(at_source, at_sink);
    const auto now = Clock::now();
    if (!step.bytes.empty()) {
        notices_.tell(Kind::from_worker, now, 0, step.bytes);
    }
    if (step.source_ended) {
        notices_.tell(Kind::output_ended, now);
    }
    if (step.sink_gone) {
        notices_.tell(Kind::host_left, now);
    }
    if (from_worker_.to().is_open()) {
        gauge_.written(from_worker_.waiting() + unread_.count(), now);
    } else {
        gauge_ = {};
    }
}

void Passing::look_whether_it_is_read() {
    const auto now = Clock::now();
    const auto silence = gauge_.silence(now);
    switch (gauge_.look(from_worker_.waiting() + unread_.count(), now)) {
        case DrainGauge::Change::stalled:
            return notices_.tell(Kind::stalled, now, silence.count());
        case DrainGauge::Change::drained:
            return notices_.tell(Kind::drained, now, silence.count());
        case DrainGauge::Change::none:
            return;
    }
}

void Passing::take_signals() {
    while (const int number = signals_.take()) {
        if (number != SIGCHLD) {
            // A worker whose end has been seen is reaped; its number may be another process's.
            if (!ended_) {
                kill(worker_, number);
                notices_.tell(Kind::signalled, Clock::now(), number);
            } else if (number == SIGTERM || number == SIGINT || number == SIGHUP) {
                told_to_end_ = true;
            }
            continue;
        }
        int status = 0;
        pid_t reaped = 0;
        while ((reaped = waitpid(worker_, &status, WNOHANG)) < 0 && errno == EINTR) {}
        if (reaped == worker_ && !ended_) {
            ended_ = status;
        }
    }
}

}  // namespace tap
