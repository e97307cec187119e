#include "tether/watch/watch.h"

#include <filesystem>
#include <signal.h>
#include <system_error>
#include <utility>
#include <vector>

#include "tether/live/session_words.h"
#include "tether/live/signals.h"

namespace tether {

using host::Clock;
using host::TimePoint;

namespace {

// With a program to run, a picture is known once the program has ended: one that is cut short by
// the end of this process is told again at the next start.
host::CameraOptions with_listener(host::CameraOptions options, bool runs_programs) {
    options.listener = listener(!runs_programs);
    return options;
}

// Before any is told: of states that wait the last is told, so a picture that was left by an
// earlier run may come before it.
host::SessionState first_state(const std::string& folder) {
    std::error_code unknown;
    host::SessionState state;
    state.folder = std::filesystem::weakly_canonical(folder, unknown).string();
    return state;
}

std::string described(const host::Picture& picture, const std::string& folder) {
    std::string text = name_in(folder, picture.path) + "  " + in_bytes(picture.bytes);
    if (picture.shot && picture.after) {
        text += "  " + in_seconds(*picture.after) + " after the shutter";
    }
    text += picture.recovered ? "  found later" : "";
    return picture.whole ? text : text + "  damaged";
}

// Never destroyed: the thread of the signals may use it while the process ends.
ShutterKeys& shutter_keys() {
    static ShutterKeys& keys = *new ShutterKeys;
    return keys;
}

// On every way out the terminal is as it was.
class KeysRestored {
  public:
    explicit KeysRestored(const ShutterKeys& keys) : keys_(keys) {}
    ~KeysRestored() {
        keys_.suspend();
    }
    KeysRestored(const KeysRestored&) = delete;
    KeysRestored& operator=(const KeysRestored&) = delete;

  private:
    const ShutterKeys& keys_;
};

void act_on_stop(int number) {
    if (number != SIGTSTP) {
        return happenings().post(Happening(Interrupted{}));
    }
    shutter_keys().suspend();
    // This thread stops before anything else: sent to the process, the signal may go to another
    // one, while this one takes the terminal back from the shell.
    raise(SIGSTOP);
    shutter_keys().resume();
}

}  // namespace

int watch(host::CameraOptions options, std::vector<std::string> command, Terminal& terminal,
          Record& record) {
    std::vector<int> signals = ending_signals();
    signals.insert(signals.end(), {SIGQUIT, SIGTSTP});
    act_on_signals(signals, act_on_stop);
    const KeysRestored restored(shutter_keys());
    return Watch(std::move(options), std::move(command), shutter_keys(), terminal, record)
        .carry_out();
}

Watch::Watch(host::CameraOptions options, std::vector<std::string> command, const ShutterKeys& keys,
             Terminal& terminal, Record& record)
    : start_(Clock::now()),
      keys_(keys),
      terminal_(terminal),
      record_(record),
      view_(start_, false, terminal, record),
      programs_(std::move(command)),
      state_(first_state(options.wishes.folder)),
      camera_(with_listener(std::move(options), programs_.any())) {}

int Watch::carry_out() {
    camera_.ask(host::Start{}, post_answer);
    while (step_ != Step::over) {
        wait_and_see();
    }
    return conclude();
}

void Watch::wait_and_see() {
    const TimePoint now = Clock::now();
    terminal_.show_progress(progress(), now);
    if (const auto happening = happenings().next(terminal_.next_redraw(now))) {
        std::visit([this](const auto& one) { on(one); }, *happening);
    }
}

void Watch::say(const std::string& text) {
    terminal_.show_text(time_column(start_, Clock::now()) + " " + text + "\n");
}

std::string Watch::progress() const {
    if (step_ == Step::waiting) {
        return "waiting for " +
               (programs_.running() == 1 ? std::string("a program")
                                         : std::to_string(programs_.running()) + " programs") +
               "; once more to kill";
    }
    return progress_of(state_);
}

// Programs first: a picture is known only while its folder is open.
void Watch::stop() {
    programs_.stop_starting();
    say_what_is_left();
    if (programs_.running() > 0) {
        step_ = Step::waiting;
    } else {
        end();
    }
}

// Those that come later, or whose program is killed, are said at the end.
void Watch::say_what_is_left() {
    const std::size_t all = programs_.left() + cut_short_;
    const std::size_t left = all - std::exchange(left_, all);
    if (left > 0) {
        say(left == 1
                ? "! 1 picture gets its program at the next start"
                : "! " + std::to_string(left) + " pictures get their program at the next start");
    }
}

void Watch::end() {
    step_ = Step::ending;
    camera_.ask(host::Shutdown{}, post_answer);
}

int Watch::conclude() {
    terminal_.show_progress({}, Clock::now());
    say_what_is_left();
    const std::string wrong = what_was_wrong(ended_);
    view_.note(wrong.empty() ? "the worker ended in order" : wrong);
    if (!wrong.empty()) {
        say("! " + wrong);
    }
    if (!record_.trouble().empty()) {
        say("! the record is not complete: " + record_.trouble());
    }
    say(std::to_string(pictures_) + (pictures_ == 1 ? " picture in " : " pictures in ") +
        state_.folder);
    return failed_ || !wrong.empty() || !record_.trouble().empty() ? 1 : 0;
}

void Watch::on(const host::WireLine& line) {
    view_.show(line);
}

void Watch::on(const host::SessionState& state) {
    const bool ready = state.state == host::State::ready && state_.state != host::State::ready;
    state_ = state;
    if (ready) {
        say("· " + state.camera.value_or("The camera") + " is ready" +
            (keys_.listening() ? "; space or enter shoots, Ctrl-C ends" : ""));
    }
}

void Watch::on(const host::Picture& picture) {
    ++pictures_;
    say("+ " + described(picture, state_.folder));
    programs_.run(picture);
}

void Watch::on(const host::Problem& problem) {
    view_.record(problem);
    say("! " + sentence(problem));
}

void Watch::on(const LeftOut& left_out) {
    view_.left_out(left_out.count);
}

void Watch::on(const Answered& answered) {
    if (const auto* ended = std::get_if<host::Ended>(&answered.answer)) {
        ended_ = *ended;
        step_ = Step::over;
        return;
    }
    if (step_ != Step::starting) {
        return;  // of Connect: it goes on trying, and says why it has to
    }
    if (const auto* problem = std::get_if<host::Problem>(&answered.answer)) {
        say("! " + sentence(*problem));
        failed_ = true;
        return end();
    }
    step_ = Step::watching;
    camera_.ask(host::Connect{}, post_answer);
}

// The second one waits for nobody.
void Watch::on(const Interrupted&) {
    view_.note("interrupted");
    switch (step_) {
        case Step::starting:
        case Step::watching:
            return stop();
        case Step::waiting:
            killing_ = true;
            return programs_.kill_all();
        case Step::ending:
            camera_.ask(host::Shutdown{host::Time{}}, post_answer);
            return;
        case Step::over:
            return;
    }
}

void Watch::on(const ShutterKey&) {
    if (step_ != Step::watching) {
        return;
    }
    // What comes of a shot is told anyway; that there can be none yet is not.
    camera_.ask(host::Capture{}, [](const host::Answer& answer) {
        if (const auto* problem = std::get_if<host::Problem>(&answer)) {
            happenings().post(*problem);
        }
    });
}

// A picture whose program the user killed is known at the next start.
void Watch::on(const ProgramEnded& ended) {
    if (!ended.trouble.empty()) {
        say("! " + ended.trouble);
    }
    programs_.ended(ended.picture);
    if (killing_ && ended.cut_short) {
        ++cut_short_;
    } else {
        camera_.told(ended.picture);
    }
    if (step_ == Step::waiting && programs_.running() == 0) {
        end();
    }
}

}  // namespace tether
