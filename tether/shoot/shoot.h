// A tethered shoot: so many shots, one after the other, and what came of them.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "host/brain/times.h"
#include "host/camera.h"
#include "host/process/clock.h"
#include "tether/conversation/record.h"
#include "tether/conversation/terminal.h"
#include "tether/live/happenings.h"
#include "tether/live/wire_view.h"
#include "tether/shoot/report.h"

namespace tether {

struct Plan {
    unsigned int shots = 3;
    host::Duration every{};                    // at least this long from one shot to the next
    host::Time wait{std::chrono::minutes(1)};  // for the camera, at most
};

// The exit status: 0 only when every shot is complete. `options` without a listener. Called while
// the process has one thread.
int shoot(const Plan& plan, host::CameraOptions options, Terminal& terminal, Record& record);

// The main thread only.
class Shoot {
  public:
    Shoot(const Plan& plan, host::CameraOptions options, Terminal& terminal, Record& record);

    int carry_out();

  private:
    // connecting: a session is asked for. shooting: a shot is. pausing: the next one is due at the
    // deadline. ending: the worker is. over: it is ended.
    enum class Step { connecting, shooting, pausing, ending, over };

    void wait_and_see();
    void go_on();
    void connect();
    void fire();
    void end(std::optional<host::Time> patience);
    void stop(const std::string& trouble);
    std::string progress() const;
    void add_late_problems();
    int conclude();

    void on(const host::WireLine& line);
    void on(const host::SessionState& state);
    void on(const host::Picture& picture);
    void on(const host::Shot& shot);
    void on(const host::Problem& problem);
    void on(const LeftOut& left_out);
    void on(const Answered& answered);
    void on(const Interrupted& interrupted);
    void on(const ShutterKey&) {}
    void on(const ProgramEnded&) {}
    void hear(const host::SessionState& ready);
    void hear(const host::Shot& shot);
    void hear(const host::Done&) {}
    void hear(const host::Ended& ended);
    void hear(const host::Problem& problem);

    const Plan plan_;
    Terminal& terminal_;
    Record& record_;
    WireView view_;
    const host::brain::Times times_;
    host::Camera camera_;
    host::SessionState state_;
    Step step_ = Step::connecting;
    host::TimePoint deadline_ = host::TimePoint::max();
    host::TimePoint fired_{};              // the latest shot
    unsigned int not_fired_ = 0;           // times that the shot whose turn it is could not be
    std::vector<host::Problem> of_shots_;  // problems that were told with a shot's number
    Report report_;
};

}  // namespace tether
