// A tethered shoot: what is said to the worker, and what is made of its answers. Knows no process
// and no terminal: lines and the passing of time are told to it.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/process/clock.h"
#include "tether/shoot/picture.h"

namespace tether {

struct Plan {
    unsigned shots = 3;
    host::Duration every{};  // at least this long from one shot to the next
    host::Duration patience = std::chrono::seconds(20);  // for the pictures of one shot
    std::filesystem::path folder;
    std::string save_dest = "disk";
    std::optional<std::string> file_type;  // the camera's own unless given
};

struct Shot {
    host::TimePoint fired;
    std::vector<Picture> pictures;
};

// What came of it.
struct Report {
    std::vector<Shot> shots;
    std::vector<Picture> unasked;       // taken at the camera, or too late for any shot
    std::vector<std::string> troubles;  // each a sentence; none: all went well
    unsigned without_picture = 0;       // shots that did not bring all their pictures
    unsigned connection_losses = 0;
};

// What names the folder to the worker; nothing, and why, when it is too long: the worker would cut
// it, and the pictures would go to another one.
std::optional<std::string> command_for_folder(const std::filesystem::path& folder,
                                              std::string& why);

class Shoot {
  public:
    Shoot(Plan plan, std::function<void(const std::string&)> send);

    // The worker has been started.
    void begin(host::TimePoint now);
    void hear(std::string_view line, host::TimePoint at);
    void pass(host::TimePoint now);  // the deadline has passed
    void stop(const std::string& trouble);
    void conclude();  // nothing more will be heard

    host::TimePoint deadline() const {
        return deadline_;
    }
    bool over() const {
        return state_ == State::over;
    }
    // What is going on, while something is that takes its time.
    std::string progress() const;

    const Report& report() const {
        return report_;
    }

  private:
    enum class State {
        starting,     // READY has not come
        connecting,   // CONNECT has been sent
        backing_off,  // the next CONNECT is due at the deadline
        settling,     // the session is up; the settings are on their way to the camera
        setting_type,
        shooting,  // CAPTURE has been sent; its pictures are missing
        pausing,   // the next shot is due at the deadline
        over
    };

    // shoot.cpp
    void enter(State state, host::TimePoint deadline);
    void hear_ready(host::TimePoint at);
    void hear_error(const std::string& text, host::TimePoint at);

    // shoot_connection.cpp
    void connect(host::TimePoint now);
    void connection_failed(const std::string& why, host::TimePoint now);
    void lose_connection(host::TimePoint now);
    void hear_disconnected(host::TimePoint at);
    void settle(host::TimePoint now);
    void settled(host::TimePoint now);
    void settling_failed(host::TimePoint now);

    // shoot_pictures.cpp
    void go_on(host::TimePoint now);  // to the next shot when it is due, or to the end
    void fire(host::TimePoint now);
    void hear_captured(host::TimePoint at);
    void take_picture(const std::filesystem::path& file, host::TimePoint at);
    void add_picture(Shot& shot, const Picture& picture, host::TimePoint at);
    void give_pictures_up(host::TimePoint now);
    bool has_too_few_pictures(const Shot& shot) const;
    void lose_shot(const std::string& how);
    bool may_be_alone() const;
    bool has_all_pictures(const Shot& shot) const;
    std::string shot_name() const;

    const Plan plan_;
    const std::function<void(const std::string&)> send_;
    State state_ = State::starting;
    host::TimePoint deadline_;
    unsigned failed_connects_ = 0;
    unsigned disconnects_to_come_ = 0;  // answers to our own DISCONNECT
    bool handle_held_ = false;   // the worker must give its handle back before the next CONNECT
    bool shot_cut_off_ = false;  // stopped while its pictures were on their way
    std::string save_dest_;      // in force, as the worker reported it
    std::string file_type_;
    Report report_;
};

}  // namespace tether
