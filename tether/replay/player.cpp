#include "tether/replay/player.h"

#include <algorithm>
#include <utility>

#include "host/process/fields.h"

namespace replay {

using host::TimePoint;
using Kind = Step::Kind;

namespace {

constexpr std::string_view fence = "PRIME";
constexpr std::string_view fence_answer = "PRIME_DONE|OK";
constexpr std::string_view folder_command = "SET_DOWNLOAD_DIR|";
constexpr std::string_view report = "DOWNLOADED|";
// How long a shutter takes in any worker: no host believes a picture that comes sooner.
constexpr Milliseconds shutter{735};
// A host that has not sent a fence this long after it did for the record is not going to.
constexpr std::chrono::seconds patience_for_a_fence{2};
// What a worker that is told to leave takes at most; nothing that is due later is waited for then.
constexpr std::chrono::seconds time_to_leave{3};

std::string in_quotes(const std::string& text) {
    return "\"" + text + "\"";
}

// The folder is the host's own each time.
bool same(const std::string& recorded, const std::string& heard) {
    return recorded == heard ||
           (recorded.starts_with(folder_command) && heard.starts_with(folder_command) &&
            heard.size() > folder_command.size());
}

bool is_host(const Step& step) {
    return step.kind == Kind::host_says || step.kind == Kind::host_closes;
}

}  // namespace

Player::Player(const Run& run, bool fast, std::string folder, Actions actions, TimePoint start)
    : run_(run),
      fast_(fast),
      actions_(std::move(actions)),
      step_at_(run.steps.empty() ? run.ending.at : run.steps.front().at),
      played_at_(start),
      next_(start),
      folder_(std::move(folder)) {}

void Player::hear(const std::string& line) {
    heard_.push_back(line);
}

void Player::end_of_input() {
    input_ended_ = true;
}

TimePoint Player::play(TimePoint now) {
    next_ = TimePoint::max();
    while (!over_ && play_step(now)) {}
    return next_;
}

// False when there is nothing to do before next_.
bool Player::play_step(TimePoint now) {
    if (position_ == run_.steps.size()) {
        come_to_the_end(now);
        return false;
    }
    const Step& step = run_.steps[position_];
    if (is_host(step)) {
        return await(step, now);
    }
    if (const TimePoint at = due(step.at, now); at > now) {
        wait_until(at, now);
        return false;
    }
    say(step);
    happened(step, due(step.at, now));
    return true;
}

// A host that says something meanwhile which the record has later is not left to wait for that: a
// fence would be missed, and whoever is told to leave leaves.
void Player::wait_until(TimePoint at, TimePoint now) {
    next_ = at;
    while (!heard_.empty() && heard_.front() == fence && at - now > patience_for_a_fence) {
        heard_.pop_front();
        answer_fence();
    }
    const bool leaves = input_ended_ || (!heard_.empty() && heard_.front() == "QUIT");
    if (leaves && !told_to_leave_ && at - now > time_to_leave) {
        next_ = TimePoint::max();
        end_early();
    }
}

void Player::answer_fence() const {
    actions_.say({Kind::worker_says, {}, {}, true, {}, 0}, std::string(fence_answer));
}

bool Player::await(const Step& step, TimePoint now) {
    if (!heard_.empty() && step.kind == Kind::host_says) {
        const std::string heard = heard_.front();
        heard_.pop_front();
        compare(step, heard, now);
        return true;
    }
    if (step.kind == Kind::host_closes && (input_ended_ || !heard_.empty())) {
        told_to_leave_ = true;
        happened(step, now);
        return true;
    }
    if (input_ended_) {
        end_early();
        return false;
    }
    return pass_over_fence(step, now);
}

void Player::compare(const Step& step, const std::string& heard, TimePoint now) {
    if (same(step.text, heard)) {
        return host_said(step, heard, now);
    }
    // What a fence is for is to be answered, whenever it comes; and one that does not come is
    // missed by nobody.
    if (heard == fence) {
        answer_fence();
    } else if (step.text == fence) {
        heard_.push_front(heard);
        ++fences_passed_over_;
        happened(step, now);
    } else {
        actions_.differs(step.line_number, "expected " + in_quotes(step.text) + ", the host said " +
                                               in_quotes(heard));
        go_on_from(position_, heard, now);
    }
}

// Behind something else than was expected: at the place where the record has that line. What the
// worker said before it is said at once.
void Player::go_on_from(std::size_t position, const std::string& heard, TimePoint now) {
    const auto begin = run_.steps.begin() + static_cast<std::ptrdiff_t>(position);
    const auto found = std::find_if(begin, run_.steps.end(), [&](const Step& step) {
        return step.kind == Kind::host_says && same(step.text, heard);
    });
    if (found == run_.steps.end()) {
        if (heard == "QUIT") {
            end_early();
        }
        return;
    }
    for (auto step = begin; step != found; ++step) {
        if (step->kind == Kind::host_says && step->text == fence) {
            ++fences_passed_over_;
        } else if (!is_host(*step)) {
            say(*step);
        }
        happened(*step, now);
    }
    host_said(*found, heard, now);
}

void Player::host_said(const Step& step, const std::string& heard, TimePoint now) {
    if (heard.starts_with(folder_command)) {
        folder_ = host::unescape_field(heard.substr(folder_command.size()));
        recorded_folder_ = host::unescape_field(step.text.substr(folder_command.size()));
    } else if (heard == "CAPTURE") {
        not_before_ = now + shutter;
    } else if (heard == "QUIT") {
        told_to_leave_ = true;
    }
    happened(step, now);
}

bool Player::pass_over_fence(const Step& step, TimePoint now) {
    if (step.text != fence) {
        return false;
    }
    const TimePoint given_up = played_at_ + (step.at - step_at_) + patience_for_a_fence;
    if (now < given_up) {
        next_ = given_up;
        return false;
    }
    ++fences_passed_over_;
    happened(step, now);
    return true;
}

void Player::say(const Step& step) {
    if (step.text == fence_answer && fences_passed_over_ > 0) {
        --fences_passed_over_;
        return;
    }
    actions_.say(step, in_the_hosts_folder(step));
}

// A line that names the record's folder names the host's; a file in there is made.
std::string Player::in_the_hosts_folder(const Step& step) {
    const bool reports = step.text.starts_with(report);
    const bool names_folder = step.text.starts_with("DOWNLOAD_DIR|");
    if (folder_.empty() || step.kind != Kind::worker_says || !(reports || names_folder)) {
        return step.text;
    }
    if (names_folder) {
        return "DOWNLOAD_DIR|" + host::escape_field(folder_);
    }
    const std::string path = host::unescape_field(step.text.substr(report.size()));
    const std::size_t name = path.rfind('/') + 1;
    const bool elsewhere =
        !recorded_folder_.empty() && path.substr(0, name) != recorded_folder_ + "/";
    if (name == 0 || name == path.size() || elsewhere) {
        return step.text;
    }
    const std::string in_place = folder_ + "/" + path.substr(name);
    actions_.make_picture(in_place, step.fate);
    return std::string(report) + host::escape_field(in_place);
}

void Player::come_to_the_end(TimePoint now) {
    switch (run_.ending.kind) {
        case Ending::Kind::hangs:
            return;
        case Ending::Kind::unknown:
            // The record tells no more. What the host says now is not in it, but it can leave.
            for (; !heard_.empty(); heard_.pop_front()) {
                if (heard_.front() == "QUIT") {
                    return end_early();
                }
                if (heard_.front() == fence) {
                    answer_fence();
                } else {
                    actions_.differs(
                        0, "the record ends before the host said " + in_quotes(heard_.front()));
                }
            }
            if (input_ended_) {
                end_early();
            }
            return;
        case Ending::Kind::status:
            if (const TimePoint at = due(run_.ending.at, now); at > now) {
                return wait_until(at, now);
            }
            over_ = true;
            return actions_.end(run_.ending);
    }
}

// As a worker leaves that is told to; unless the record has one that did not.
void Player::end_early() {
    if (run_.ending.kind != Ending::Kind::hangs) {
        over_ = true;
        actions_.end({Ending::Kind::status, 0, {}});
    }
}

void Player::happened(const Step& step, TimePoint at) {
    position_ = static_cast<std::size_t>(&step - run_.steps.data()) + 1;
    step_at_ = step.at;
    played_at_ = at;
}

TimePoint Player::due(Milliseconds at, TimePoint now) const {
    const TimePoint recorded = played_at_ + (at - step_at_);
    return std::max(fast_ ? std::min(now, recorded) : recorded, not_before_);
}

}  // namespace replay
