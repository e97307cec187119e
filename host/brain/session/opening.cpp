// A session with a camera: opened, and closed.
#include <algorithm>

#include "host/brain/brain.h"
#include "host/brain/text.h"
#include "host/process/fields.h"

namespace host::brain {

void Brain::open() {
    enter(State::opening);
    opening_ = {};
    // What the camera of before has not sent does not come any more, and another one may be there
    // that gives the same names.
    ++sessions_;
    last_stem_.clear();
    clear(Code::folder_not_taken);
    opening_.deadline = now_ + times_.to_open;
    deadline_ = opening_.deadline;
    say("CONNECT");
    opening_.fence = fence();
}

void Brain::hear_connected(std::string_view text) {
    const bool already = text == "already";
    if (!already) {
        name_heard_ = beginning(unescape_field(text), limit::camera_name);
    }
    switch (state_) {
        case State::opening:
            opening_.connected = true;
            opening_.already = already;
            return judge_opening();
        case State::settling:
            settling_.again = true;
            return;
        case State::lost:
            return settle(false);
        case State::ready:
            probe_.connected = probe_.fence != 0;
            if (loss_in_doubt_) {
                settle(false);
            }
            return;
        case State::down:
        case State::starting:
        case State::idle:
        case State::closing:
        case State::ending:
            return;
    }
}

// Before the fence, what is heard may be part of a camera's name; the worker lists cameras before
// it opens one.
void Brain::judge_opening() {
    if (state_ != State::opening || !fence_.passed(opening_.fence)) {
        return;
    }
    if (opening_.connected) {
        settle(true);
    } else if (opening_.failure) {
        fail_session(Problem(*opening_.failure));
    }
}

void Brain::fail_session(const Problem& problem) {
    raise_camera_problem(problem);
    close();
}

// Also after an error: until then the worker keeps the camera's handle.
void Brain::close() {
    forget_session();
    enter(State::closing);
    say("DISCONNECT");
    closing_ = fence();
}

void Brain::closed() {
    const Time pause = times_.back_off[std::min(failures_, times_.back_off.size() - 1)];
    ++failures_;
    enter(State::idle);
    if (wanted_) {
        deadline_ = now_ + pause;
    }
    reply_all(disconnects_, state());
}

}  // namespace host::brain
