// The shots of a shoot, and which picture belongs to which.
#include <algorithm>

#include "tether/shoot/shoot.h"

namespace tether {

using host::TimePoint;

namespace {

constexpr std::chrono::seconds time_for_second_half{3};

}  // namespace

void Shoot::go_on(TimePoint now) {
    if (report_.shots.size() == plan_.shots) {
        enter(State::over, TimePoint::max());
        return;
    }
    const TimePoint due = report_.shots.empty() ? now : report_.shots.back().fired + plan_.every;
    if (due > now) {
        enter(State::pausing, due);
    } else {
        fire(now);
    }
}

void Shoot::fire(TimePoint now) {
    report_.shots.push_back({now, {}});
    send_("CAPTURE");
    enter(State::shooting, now + plan_.patience);
}

void Shoot::hear_captured(TimePoint at) {
    if (has_all_pictures(report_.shots.back())) {
        go_on(at);
    }
}

void Shoot::take_picture(const std::filesystem::path& file, TimePoint at) {
    std::string why;
    const auto bytes = accept(file, plan_.folder, why);
    if (!bytes) {
        report_.troubles.push_back("not accepted: " + file.string() + " (" + why + ")");
        return;
    }
    // The half of a pair that came late belongs to its own shot, whatever is on its way now.
    for (Shot& shot : report_.shots) {
        if (!shot.pictures.empty() && is_pair(shot.pictures.front().file, file)) {
            return add_picture(shot, {file, *bytes, at - shot.fired}, at);
        }
    }
    const bool late = shot_cut_off_ && report_.shots.back().pictures.empty();
    if (state_ == State::shooting || late) {
        Shot& shot = report_.shots.back();
        return add_picture(shot, {file, *bytes, at - shot.fired}, at);
    }
    report_.unasked.push_back({file, *bytes, {}});
}

void Shoot::add_picture(Shot& shot, const Picture& picture, TimePoint at) {
    shot.pictures.push_back(picture);
    if (state_ != State::shooting || &shot != &report_.shots.back()) {
        return;
    }
    if (has_all_pictures(shot)) {
        go_on(at);
    } else if (may_be_alone()) {
        enter(State::shooting, std::min(deadline_, at + time_for_second_half));
    }
}

void Shoot::give_pictures_up(TimePoint now) {
    const Shot& shot = report_.shots.back();
    if (has_too_few_pictures(shot)) {
        lose_shot(std::string(shot.pictures.empty() ? "brought no picture"
                                                    : "brought only half of its pair") +
                  " in time");
    }
    go_on(now);
}

bool Shoot::has_too_few_pictures(const Shot& shot) const {
    return !has_all_pictures(shot) && (shot.pictures.empty() || !may_be_alone());
}

void Shoot::lose_shot(const std::string& why) {
    ++report_.without_picture;
    report_.troubles.push_back(shot_name() + " " + why);
}

// "other" is RAW+HEIF, a pair, or whatever else the camera can be set to.
bool Shoot::may_be_alone() const {
    return file_type_ == "other";
}

bool Shoot::has_all_pictures(const Shot& shot) const {
    if (save_dest_ == "card") {
        return true;
    }
    if (file_type_ != "both" && !may_be_alone()) {
        return !shot.pictures.empty();
    }
    return std::any_of(shot.pictures.begin(), shot.pictures.end(), [&](const Picture& picture) {
        return is_pair(shot.pictures.front().file, picture.file);
    });
}

std::string Shoot::shot_name() const {
    return "shot " + std::to_string(report_.shots.size()) + " of " + std::to_string(plan_.shots);
}

}  // namespace tether
