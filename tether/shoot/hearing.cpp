// What a shoot makes of what it is told.
#include "tether/live/session_words.h"
#include "tether/shoot/shoot.h"

namespace tether {

using host::Code;

namespace {

constexpr unsigned int most_not_fired = 3;

// CAPTURE was never sent, and may be once a session is up again.
bool may_be_fired_later(const host::Shot& shot) {
    if (shot.status != host::ShotStatus::refused || shot.problems.empty()) {
        return false;
    }
    switch (shot.problems.front().code) {
        case Code::expired:
        case Code::not_connected:
        case Code::camera_lost:
        case Code::camera_not_found:
        case Code::camera_no_answer:
        case Code::camera_refused:
        case Code::camera_error:
        case Code::worker_gone:
        case Code::worker_hangs:
        case Code::worker_floods:
            return true;
        default:
            return false;
    }
}

}  // namespace

void Shoot::on(const host::WireLine& line) {
    view_.show(line);
}

// A session that is down is tried again once a minute, for booths that nobody attends to; here
// somebody waits.
void Shoot::on(const host::SessionState& state) {
    state_ = state;
    if (state.state != host::State::down || step_ == Step::ending) {
        return;
    }
    for (const host::Problem& problem : state.problems) {
        if (host::severity(problem.code) == host::Severity::error) {
            return stop(sentence(problem));
        }
    }
}

void Shoot::on(const host::Picture& picture) {
    report_.pictures.push_back(picture);
}

void Shoot::on(const host::Shot&) {}

void Shoot::on(const host::Problem& problem) {
    view_.record(problem);
    if (problem.shot) {
        of_shots_.push_back(problem);
    } else {
        report_.add(problem);
    }
}

void Shoot::on(const LeftOut& left_out) {
    view_.left_out(left_out.count);
}

void Shoot::on(const Answered& answered) {
    std::visit([this](const auto& answer) { hear(answer); }, answered.answer);
}

void Shoot::on(const Interrupted&) {
    view_.note("interrupted");
    if (step_ == Step::ending) {
        return end(host::Time{});
    }
    stop("interrupted");
}

// Of Connect.
void Shoot::hear(const host::SessionState& ready) {
    if (step_ == Step::connecting) {
        state_ = ready;
        go_on();
    }
}

void Shoot::hear(const host::Shot& shot) {
    if (step_ == Step::shooting && may_be_fired_later(shot) && ++not_fired_ < most_not_fired) {
        return connect();
    }
    not_fired_ = 0;
    report_.shots.push_back(shot);
    if (step_ != Step::shooting) {
        return;
    }
    if (shot.status == host::ShotStatus::refused) {
        return end({});
    }
    go_on();
}

void Shoot::hear(const host::Ended& ended) {
    report_.ended = ended;
    step_ = Step::over;
}

// Of Connect, or of a Capture that no session had been up for.
void Shoot::hear(const host::Problem& problem) {
    if (step_ == Step::connecting || step_ == Step::shooting) {
        stop(sentence(problem));
    }
}

}  // namespace tether
