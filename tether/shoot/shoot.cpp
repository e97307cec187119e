#include "tether/shoot/shoot.h"

#include <algorithm>
#include <utility>

#include "tether/live/session_words.h"
#include "tether/live/signals.h"
#include "tether/shoot/summary.h"

namespace tether {

using host::Clock;
using host::TimePoint;

namespace {

// A camera that is settling or coming back may take a shot a while after it was asked for one.
constexpr std::chrono::seconds time_to_fire{30};

// For files that are on their way when the user stops.
constexpr std::chrono::seconds time_for_the_rest{2};

host::brain::Times times_of(const Plan& plan) {
    host::brain::Times times;
    times.connect_request = plan.wait;
    return times;
}

host::CameraOptions of_a_shoot(host::CameraOptions options, const host::brain::Times& times) {
    options.listener = listener(true);
    options.times = &times;
    return options;
}

}  // namespace

int shoot(const Plan& plan, host::CameraOptions options, Terminal& terminal, Record& record) {
    act_on_signals(ending_signals(), [](int) { happenings().post(Happening(Interrupted{})); });
    return Shoot(plan, std::move(options), terminal, record).carry_out();
}

Shoot::Shoot(const Plan& plan, host::CameraOptions options, Terminal& terminal, Record& record)
    : plan_(plan),
      terminal_(terminal),
      record_(record),
      view_(Clock::now(), true, terminal, record),
      times_(times_of(plan)),
      camera_(of_a_shoot(std::move(options), times_)) {
    report_.planned = plan.shots;
}

int Shoot::carry_out() {
    connect();
    while (step_ != Step::over) {
        wait_and_see();
    }
    // What was told before the worker's end is in the queue before the answer, so this was all.
    return conclude();
}

void Shoot::wait_and_see() {
    const TimePoint now = Clock::now();
    terminal_.show_progress(progress(), now);
    if (now >= deadline_) {
        deadline_ = TimePoint::max();
        return go_on();
    }
    if (const auto happening = happenings().next(std::min(deadline_, terminal_.next_redraw(now)))) {
        std::visit([this](const auto& one) { on(one); }, *happening);
    }
}

void Shoot::connect() {
    step_ = Step::connecting;
    camera_.ask(host::Connect{}, post_answer);
}

// To the next shot when it is due, or to the end.
void Shoot::go_on() {
    if (report_.shots.size() == plan_.shots) {
        return end({});
    }
    const TimePoint due = report_.shots.empty() ? Clock::now() : fired_ + plan_.every;
    if (due > Clock::now()) {
        step_ = Step::pausing;
        deadline_ = due;
    } else if (state_.state == host::State::ready) {
        fire();
    } else {
        connect();
    }
}

void Shoot::fire() {
    step_ = Step::shooting;
    fired_ = Clock::now();
    host::Capture capture;
    capture.expires = time_to_fire;
    camera_.ask(capture, post_answer);
}

void Shoot::end(std::optional<host::Time> patience) {
    step_ = Step::ending;
    deadline_ = TimePoint::max();
    camera_.ask(host::Shutdown{patience}, post_answer);
}

void Shoot::stop(const std::string& trouble) {
    report_.add_trouble(trouble);
    report_.sound = false;
    if (step_ != Step::ending) {
        end(time_for_the_rest);
    }
}

std::string Shoot::progress() const {
    if (step_ == Step::shooting && state_.state == host::State::ready) {
        return "shot " + std::to_string(report_.shots.size() + 1) + " of " +
               std::to_string(plan_.shots) + " on its way";
    }
    return progress_of(state_);
}

// A shot that is over has its problems with it; a file that comes later can bring another one.
void Shoot::add_late_problems() {
    for (const host::Problem& problem : of_shots_) {
        const bool known =
            std::any_of(report_.shots.begin(), report_.shots.end(), [&](const host::Shot& shot) {
                return std::find(shot.problems.begin(), shot.problems.end(), problem) !=
                       shot.problems.end();
            });
        if (!known) {
            report_.add(problem);
        }
    }
}

int Shoot::conclude() {
    add_late_problems();
    terminal_.show_progress({}, Clock::now());
    const std::string wrong = what_was_wrong(*report_.ended);
    if (!wrong.empty()) {
        report_.add_trouble(wrong);
    }
    view_.note(wrong.empty() ? "the worker ended in order" : wrong);
    if (!record_.trouble().empty()) {
        report_.add_trouble("the record is not complete: " + record_.trouble());
        report_.sound = false;
    }
    terminal_.show_text(summary(report_, state_.folder));
    return report_.good() ? 0 : 1;
}

}  // namespace tether
