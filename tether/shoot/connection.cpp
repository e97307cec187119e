// The session that a shoot needs: opened, brought back after a loss, its settings awaited.
#include <algorithm>
#include <utility>

#include "tether/shoot/shoot.h"

namespace tether {

using host::TimePoint;
using std::chrono::seconds;

namespace {

// The worker gives an opening up after 20 s; there are losses on which it stays silent.
constexpr seconds time_to_connect{25};
// Writes that the camera is too busy for are repeated for 2 s each.
constexpr seconds time_to_settle{15};
constexpr unsigned most_connects = 6;

// 1, 2, 4, then 8 s.
seconds back_off(unsigned failed_connects) {
    return seconds(1u << std::min(failed_connects - 1, 3u));
}

}  // namespace

void Shoot::connect(TimePoint now) {
    if (std::exchange(handle_held_, false)) {
        ++disconnects_to_come_;
        send_("DISCONNECT");
    }
    send_("CONNECT|" + plan_.save_dest);
    enter(State::connecting, now + time_to_connect);
}

void Shoot::connection_failed(const std::string& why, TimePoint now) {
    ++failed_connects_;
    if (failed_connects_ == most_connects) {
        stop("no session with a camera: " + why);
        return;
    }
    enter(State::backing_off, now + back_off(failed_connects_));
}

void Shoot::lose_connection(TimePoint now) {
    ++report_.connection_losses;
    if (state_ == State::shooting) {
        lose_shot("was lost with the camera");
        if (report_.shots.size() == plan_.shots) {
            return enter(State::over, TimePoint::max());
        }
    }
    handle_held_ = true;
    // The SDK may bring the session back by itself, which is gentler than opening a new one.
    connection_failed("the camera went away", now);
}

void Shoot::hear_disconnected(TimePoint at) {
    if (disconnects_to_come_ > 0) {
        --disconnects_to_come_;
    } else if (state_ == State::connecting) {
        handle_held_ = true;
        connection_failed("the camera went away while it was opened", at);
    } else if (state_ != State::starting && state_ != State::backing_off && state_ != State::over) {
        lose_connection(at);
    }
}

// The worker has queued the settings before it said CONNECTED, so its answer to a PRIME comes after
// them.
void Shoot::settle(TimePoint now) {
    failed_connects_ = 0;
    handle_held_ = false;
    send_("PRIME");
    enter(State::settling, now + time_to_settle);
}

void Shoot::settled(TimePoint now) {
    if (state_ == State::settling && plan_.file_type && file_type_ != *plan_.file_type) {
        send_("SET_FILE_TYPE|" + *plan_.file_type);
        send_("PRIME");
        enter(State::setting_type, now + time_to_settle);
        return;
    }
    go_on(now);
}

void Shoot::settling_failed(TimePoint now) {
    report_.troubles.push_back("the camera did not take its settings in " +
                               std::to_string(time_to_settle.count()) + " s");
    lose_connection(now);
}

}  // namespace tether
