// Stays with a camera and brings in every picture, also those of the button on its body; shoots at
// a key; runs a program for each picture.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "host/camera.h"
#include "tether/conversation/record.h"
#include "tether/conversation/terminal.h"
#include "tether/live/happenings.h"
#include "tether/live/wire_view.h"
#include "tether/watch/programs.h"
#include "tether/watch/shutter_keys.h"

namespace tether {

// Until it is interrupted; the exit status. `options` without a listener; `command`: a program's
// path and its fixed arguments, or empty. Called while the process has one thread.
int watch(host::CameraOptions options, std::vector<std::string> command, Terminal& terminal,
          Record& record);

// The main thread only.
class Watch {
  public:
    Watch(host::CameraOptions options, std::vector<std::string> command, const ShutterKeys& keys,
          Terminal& terminal, Record& record);

    // The exit status: 0 when it was ended in order.
    int carry_out();

  private:
    // starting: the worker is. watching: until somebody wants to stop. waiting: for programs.
    // ending: the worker is. over: it is ended.
    enum class Step { starting, watching, waiting, ending, over };

    void wait_and_see();
    void stop();
    void end();
    void say_what_is_left();
    void say(const std::string& text);
    std::string progress() const;
    int conclude();

    void on(const host::WireLine& line);
    void on(const host::SessionState& state);
    void on(const host::Picture& picture);
    void on(const host::Shot&) {}
    void on(const host::Problem& problem);
    void on(const LeftOut& left_out);
    void on(const Answered& answered);
    void on(const Interrupted& interrupted);
    void on(const ShutterKey& key);
    void on(const ProgramEnded& ended);

    const host::TimePoint start_;
    const ShutterKeys& keys_;
    Terminal& terminal_;
    Record& record_;
    WireView view_;
    Programs programs_;
    host::SessionState state_;
    host::Camera camera_;
    Step step_ = Step::starting;
    host::Ended ended_;
    std::size_t pictures_ = 0;
    std::size_t left_ = 0;       // pictures for whose program the next start is announced
    std::size_t cut_short_ = 0;  // programs that were killed by the second interrupt
    bool killing_ = false;       // it has come
    bool failed_ = false;
};

}  // namespace tether
