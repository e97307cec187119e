#include "tether/shoot/shoot.h"

#include <utility>

#include "host/process/command.h"
#include "host/process/fields.h"

namespace tether {

using host::TimePoint;

namespace {

constexpr std::chrono::seconds time_to_start{10};

}  // namespace

std::optional<std::string> command_for_folder(const std::filesystem::path& folder,
                                              std::string& why) {
    auto command = host::write_command("SET_DOWNLOAD_DIR", {folder.string()}, why);
    if (!command) {
        why = "the folder " + folder.string() + " cannot be named to the worker: " + why;
    }
    return command;
}

Shoot::Shoot(Plan plan, std::function<void(const std::string&)> send)
    : plan_(std::move(plan)), send_(std::move(send)) {}

void Shoot::begin(TimePoint now) {
    enter(State::starting, now + time_to_start);
}

void Shoot::enter(State state, TimePoint deadline) {
    state_ = state;
    deadline_ = deadline;
}

void Shoot::stop(const std::string& trouble) {
    report_.troubles.push_back(trouble);
    shot_cut_off_ = shot_cut_off_ || state_ == State::shooting;
    enter(State::over, TimePoint::max());
}

void Shoot::conclude() {
    if (shot_cut_off_ && has_too_few_pictures(report_.shots.back())) {
        lose_shot("was cut off");
    }
}

void Shoot::hear(std::string_view line, TimePoint at) {
    const std::size_t separator = line.find('|');
    const std::string_view key = line.substr(0, separator);
    const std::string payload(separator == std::string_view::npos ? ""
                                                                  : line.substr(separator + 1));

    if (key == "DOWNLOADED") {
        take_picture(host::unescape_field(payload), at);
    } else if (key == "SAVE_DEST") {
        save_dest_ = payload;
    } else if (key == "FILE_TYPE") {
        file_type_ = payload;
    } else if (key == "READY" && state_ == State::starting) {
        hear_ready(at);
    } else if (key == "CONNECTED" && payload == "already" && state_ == State::connecting) {
        handle_held_ = true;
        connection_failed("the worker still holds the last session", at);
    } else if (key == "CONNECTED" &&
               (state_ == State::connecting || state_ == State::backing_off)) {
        settle(at);
    } else if (key == "PRIME_DONE" &&
               (state_ == State::settling || state_ == State::setting_type)) {
        settled(at);
    } else if (key == "REMOTE_CAPTURED" && state_ == State::shooting) {
        hear_captured(at);
    } else if (key == "DISCONNECTED") {
        hear_disconnected(at);
    } else if (key == "ERROR") {
        hear_error(payload, at);
    }
}

void Shoot::hear_ready(TimePoint at) {
    std::string why;
    const auto command = command_for_folder(plan_.folder, why);
    if (!command) {
        return stop(why);
    }
    send_(*command);
    connect(at);
}

void Shoot::pass(TimePoint now) {
    switch (state_) {
        case State::starting:
            return stop("the worker did not get ready in " + std::to_string(time_to_start.count()) +
                        " s");
        case State::connecting:
            handle_held_ = true;
            return connection_failed("the camera did not answer", now);
        case State::backing_off:
            return connect(now);
        case State::settling:
        case State::setting_type:
            return settling_failed(now);
        case State::shooting:
            return give_pictures_up(now);
        case State::pausing:
            return fire(now);
        case State::over:
            return;
    }
}

void Shoot::hear_error(const std::string& text, TimePoint at) {
    if (state_ == State::connecting) {
        handle_held_ = !text.starts_with("Camera not detected");
        connection_failed(text, at);
        return;
    }
    if (state_ == State::over || state_ == State::backing_off) {
        return;
    }
    report_.troubles.push_back("the worker says: " + text);
    if (state_ == State::starting) {
        enter(State::over, TimePoint::max());
    } else if (state_ == State::shooting && text == "Camera not connected") {
        lose_connection(at);
    }
}

std::string Shoot::progress() const {
    switch (state_) {
        case State::connecting:
            return "opening the camera";
        case State::backing_off:
            return "no camera; trying again";
        case State::shooting:
            return shot_name() + " on its way";
        default:
            return {};
    }
}

}  // namespace tether
