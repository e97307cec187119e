#include "tests/host/afternoons/witness.h"

#include <algorithm>
#include <utility>

#include "host/process/fields.h"

namespace afternoons {

using host::Code;

namespace {

constexpr Time whole_ladder{seconds(17)};  // three times 5 s, and 2 s behind SIGKILL
constexpr Time soon{seconds(1)};           // what an answer may be late

std::string tag_of(const host::Request& what) {
    const auto* capture = std::get_if<host::Capture>(&what);
    return capture == nullptr ? "" : capture->tag;
}

}  // namespace

Witness::Witness(const Agenda& agenda, const Camera& camera, Disk& disk)
    : agenda_(agenda), camera_(camera), disk_(disk) {}

void Witness::wrong(const std::string& guarantee, const std::string& text) {
    if (!failure) {
        failure = Failure{guarantee, text};
    }
}

// Its client sees it end: nothing is answered any more.
void Witness::brain_ends() {
    asked_.clear();
    unbound_.reset();
    worker_ = nullptr;
}

void Witness::brain_begins(std::uint64_t number) {
    brain_ends();
    brain_ = number;
    stops_.clear();
    told_.reset();
    unbound_.reset();
    over_.clear();
    run_.clear();
    worker_ = nullptr;
    told_to_leave_ = false;
    losses_.clear();
    failures_ = 0;
    urged_ = agenda_.now();
    ending_until_.reset();
    ending_ = false;
    ended_ = false;
    let_go_.clear();
    camera_let_go_ = {};
    next_look_ = {};
}

void Witness::brain_stands_still(Time until) {
    stops_.push_back({agenda_.now(), until});
}

void Witness::asked(host::RequestId id, const host::Request& what) {
    Asked asked;
    asked.id = id;
    asked.what = what;
    asked.at = agenda_.now();
    if (const auto* capture = std::get_if<host::Capture>(&what)) {
        asked.in_turn = true;
        asked.limit = capture->expires.value_or(seconds(5)) + seconds(15) +
                      std::clamp<Time>(capture->patience.value_or(seconds(20)), milliseconds(100),
                                       std::chrono::hours(1));
    } else if (std::holds_alternative<host::Configure>(what)) {
        asked.in_turn = true;
        asked.limit = seconds(60);
        urged_ = asked.at;
    } else if (std::holds_alternative<host::Start>(what)) {
        asked.limit = seconds(30);
        urged_ = asked.at;
    } else if (std::holds_alternative<host::Connect>(what)) {
        asked.limit = seconds(60);
        urged_ = asked.at;
        failures_ = 0;
    } else if (std::holds_alternative<host::Disconnect>(what)) {
        asked.limit = seconds(20);
        camera_let_go_ = asked.at;
    } else if (const auto* cancel = std::get_if<host::Cancel>(&what)) {
        let_go_.insert(cancel->tag);
    } else if (const auto* shutdown = std::get_if<host::Shutdown>(&what)) {
        const Time patience = shutdown->patience.value_or(seconds(10));
        asked.limit = patience + seconds(20);
        ending_ = true;
        ending_until_ = std::min(ending_until_.value_or(Time::max()), asked.at + patience);
    }
    asked_.push_back(std::move(asked));
}

// Nobody answers while it stands still.
Time Witness::allowed(Time deadline) const {
    Time until = deadline + soon;
    for (const Stop& stop : stops_) {
        if (stop.from <= until) {
            until = std::max(until, stop.until + soon);
        }
    }
    return until;
}

// Captures and settings are done one after the other.
Time Witness::turn_of(const Asked& asked) const {
    Time turn = asked.at;
    for (const Asked& one : asked_) {
        if (one.id >= asked.id) {
            break;
        }
        if (one.in_turn) {
            turn = std::max(turn, one.answered.value_or(agenda_.now()));
        }
    }
    return turn;
}

void Witness::look_for_late_answers() {
    for (const Asked& asked : asked_) {
        if (asked.answered) {
            continue;
        }
        const Time turn = asked.in_turn ? turn_of(asked) : asked.at;
        if (agenda_.now() > allowed(turn + asked.limit)) {
            return wrong("G1", "request " + std::to_string(asked.id) + " is not answered in time");
        }
    }
}

void Witness::replies(host::RequestId id, const host::Answer& answer) {
    const auto found = std::find_if(asked_.begin(), asked_.end(),
                                    [id](const Asked& asked) { return asked.id == id; });
    if (found == asked_.end() || found->answered) {
        return wrong("G1", "request " + std::to_string(id) + " is answered twice");
    }
    const Time turn = found->in_turn ? turn_of(*found) : found->at;
    if (agenda_.now() > allowed(turn + found->limit)) {
        wrong("G1", "request " + std::to_string(id) + " is answered too late");
    }
    found->answered = agenda_.now();
    found->answer = answer;
    if (const auto* state = std::get_if<host::SessionState>(&answer)) {
        if (told_ && *state != *told_) {
            wrong("G9", "an answer shows a state that was not told before");
        }
        if (std::holds_alternative<host::Connect>(found->what) &&
            state->state != host::State::ready) {
            wrong("G5", "connect is answered before the session is ready");
        }
        if (const auto* wish = std::get_if<host::Configure>(&found->what)) {
            const bool folder_known =
                !wish->folder || *wish->folder == state->folder || !state->problems.empty();
            if (!folder_known) {
                wrong("G9", "a folder that was not taken is no problem");
            }
        }
    } else if (const auto* shot = std::get_if<host::Shot>(&answer)) {
        const auto over = over_.find(shot->number);
        if (over == over_.end() || over->second != *shot) {
            wrong("G1", "a capture is answered with a shot that was not told");
        }
        if (shot->tag != tag_of(found->what)) {
            wrong("G3", "a capture is answered with another one's shot");
        }
    } else if (std::holds_alternative<host::Ended>(answer)) {
        ended_ = true;
        if (worker_ != nullptr && worker_->alive() && !worker_->cannot_be_killed &&
            !had_no_time(*found)) {
            wrong("G10", "the end is told, and the worker lives");
        }
    }
}

// Who stood still until its answer was overdue, or nearly so, has to answer in time, and a worker
// that takes the whole ladder outlives that answer. One that ends with QUIT is waited for all the
// same.
bool Witness::had_no_time(const Asked& asked) const {
    const bool overdue = std::any_of(stops_.begin(), stops_.end(), [&](const Stop& stop) {
        return stop.until + whole_ladder >= asked.at + asked.limit && stop.from < agenda_.now();
    });
    return overdue && worker_->stuck_since() != Time::max();
}

void Witness::worker_started(const std::string& run, const Worker* worker) {
    run_ = run;
    worker_ = worker;
    told_to_leave_ = false;
    fences_said_ = 0;
    fences_heard_ = 0;
    capture_fence_ = 0;
    moved_before_ = false;
}

void Witness::worker_ended(const std::string&) {}

void Witness::worker_news(const std::string& run) {
    // One that could not be ended was lost long before.
    if (run == run_ && !ending_ && !worker_->cannot_be_killed) {
        losses_.push_back(agenda_.now());
    }
}

void Witness::heard(const std::string& line, bool forged) {
    if (forged) {
        return;
    }
    if (line == "PRIME_DONE|OK") {
        ++fences_heard_;
    } else if (line == "DISCONNECTED|" && told_ && told_->state == host::State::ready) {
        probe_due_ = true;
    } else if (line.starts_with("CONNECTED|")) {
        cameras_.insert(host::unescape_field(line.substr(10)));
    }
    if (line.starts_with("DOWNLOADED|")) {
        File* file = disk_.file_at(host::unescape_field(line.substr(11)));
        if (file != nullptr && !file->reported) {
            file->reported = agenda_.now();
            file->reported_by = run_;
        }
    }
}

void Witness::says(const std::string& line, bool) {
    if (ended_) {
        wrong("G10", "a command is said after the end: " + line);
    }
    if (told_to_leave_) {
        wrong("G10", "a command is said behind QUIT: " + line);
    }
    if (worker_ == nullptr) {
        return wrong("G6", "a command is said and there is no worker: " + line);
    }
    if (line == "PRIME") {
        ++fences_said_;
    } else if (line.starts_with("SET_SAVE_DEST|")) {
        probe_due_ = false;
    } else if (line == "CAPTURE") {
        if (unbound_) {
            wrong("G1", "CAPTURE is said twice for one shot");
        }
        if (told_ && told_->state != host::State::ready) {
            wrong("G1", "CAPTURE is said in " + std::string(host::word(told_->state)));
        }
        Fired fired;
        fired.number = fired_.size() + 1;
        fired.at = agenda_.now();
        fired.brain = brain_;
        fired.run = run_;
        fired_.push_back(fired);
        unbound_ = fired.number;
        last_capture = fired.number;
        capture_fence_ = fences_said_ + 1;
    } else if (line.starts_with("SET_DOWNLOAD_DIR|")) {
        if (!std::exchange(moved_before_, true)) {
            return;
        }
        if (worker_->ever_forged) {
            return;
        }
        if (fences_heard_ < capture_fence_) {
            wrong("G2", "the folder is moved before the worker has answered to the last shot");
        }
        const bool out = std::any_of(fired_.begin(), fired_.end(), [&](const Fired& fired) {
            return fired.brain == brain_ && fired.run == run_ && !fired.over;
        });
        if (out) {
            wrong("G2", "the folder is moved under a shot");
        }
    } else if (line == "CONNECT") {
        constexpr std::array<Time, 5> pauses{milliseconds(500), seconds(1), seconds(2), seconds(4),
                                             seconds(8)};
        if (failures_ > 0 && urged_ < disconnect_said_ &&
            agenda_.now() < disconnect_said_ + pauses[std::min<std::size_t>(failures_ - 1, 4)]) {
            wrong("G5", "another opening is tried too soon");
        }
    } else if (line == "DISCONNECT") {
        disconnect_said_ = agenda_.now();
        ++failures_;
    }
}

void Witness::starts_worker(const std::string&) {
    if (ended_ || ending_) {
        wrong("G10", "a worker is started after the end was asked for");
    }
    if (worker_ != nullptr && worker_->alive() && !worker_->cannot_be_killed) {
        wrong("G6", "a worker is started beside another one");
    }
    const Time now = agenda_.now();
    const auto recent = std::count_if(losses_.begin(), losses_.end(),
                                      [now](Time loss) { return now - loss < seconds(180); });
    if (recent > 5 && urged_ < losses_.back() && now - losses_.back() < seconds(60)) {
        wrong("G6", "workers are started again and again");
    }
    failures_ = 0;
    worker_ = nullptr;
}

void Witness::ends_worker(const host::brain::EndWorker& work) {
    if (work.run != run_) {
        wrong("G6", "a worker is to be ended that was never started: " + work.run);
    }
    if (told_to_leave_) {
        wrong("G6", "a worker is ended twice");
    }
    told_to_leave_ = true;
    if (work.rung != seconds(1) && work.rung != seconds(5)) {
        wrong("G10", "the ladder has rungs of its own");
    }
}

bool Witness::stands(Code code) const {
    return told_ && std::any_of(told_->problems.begin(), told_->problems.end(),
                                [code](const host::Problem& one) { return one.code == code; });
}

void Witness::tells(const host::SessionState& state) {
    const host::State before = told_ ? told_->state : host::State::down;
    told_ = state;
    for (Fired& fired : fired_) {
        if (!fired.over && fired.type != state.file_type.in_force) {
            fired.type.reset();  // somebody turned the dial: nobody knows before or after the shot
        }
    }
    if (state.state == host::State::ready && before != host::State::ready) {
        ready_since_ = agenda_.now();
        probe_due_ = false;
        failures_ = 0;
        check_settings(state);
    }
    if (state.state == host::State::lost && before == host::State::ready) {
        check_lost();
    }
    check_in_force(state);
    check_camera(state);
    if (state.state == host::State::down && before != host::State::down && !ending_ &&
        state.problems.empty()) {
        wrong("G6", "the session is down and no problem says why");
    }
}

// A camera's name can look like lines that connect another one.
void Witness::check_camera(const host::SessionState& state) {
    const bool made_up =
        state.camera && state.camera != "Camera" && cameras_.count(*state.camera) == 0;
    if (made_up && !forging_may_slip_through) {
        wrong("G8", "a camera is shown that the worker never said: " + *state.camera);
    }
}

// A loss that a name made up is none.
void Witness::check_lost() {
    if (probe_due_) {
        wrong("G8", "a loss is believed that was not asked about");
    }
    if (worker_ == nullptr || forging_may_slip_through) {
        return;
    }
    const bool lost =
        !worker_->connected() || worker_->last_without_session >= ready_since_ || !camera_.there;
    if (!lost) {
        wrong("G8", "a session is taken for lost that is up");
    }
}

void Witness::check_settings(const host::SessionState& state) {
    const auto& destination = state.save_destination;
    if (destination.asked != destination.in_force && !stands(Code::destination_not_taken) &&
        !stands(Code::card_missing)) {
        wrong("G9", "the destination in force is not what was asked, and no problem says so");
    }
    if (state.file_type.asked && state.file_type.asked != state.file_type.in_force &&
        !stands(Code::file_type_not_taken)) {
        wrong("G9", "the type in force is not what was asked, and no problem says so");
    }
}

void Witness::check_in_force(const host::SessionState& state) {
    if (worker_ == nullptr || forging_may_slip_through || !worker_->ready()) {
        return;
    }
    const auto& destination = state.save_destination.in_force;
    const auto& type = state.file_type.in_force;
    if ((destination && worker_->said.count(std::string(host::word(*destination))) == 0) ||
        (type && worker_->said.count("type " + std::string(host::word(*type))) == 0)) {
        wrong("G8", "a setting is shown that the worker never said");
    }
}

void Witness::tells(const host::Picture& picture, bool) {
    ++pictures_told;
    const Disk::Entry* entry = disk_.entry_with(picture.id);
    if (entry == nullptr) {
        return wrong("G2", "a picture is told that was never placed: " + picture.id);
    }
    const auto [known, is_new] = by_id_.emplace(picture.id, picture);
    if (!is_new && known->second != picture) {
        wrong("G2", "a picture is told again as another one: " + picture.id);
    }
    const bool twice = std::any_of(shown_.begin(), shown_.end(), [&](const Shown& one) {
        return one.brain == brain_ && one.picture.id == picture.id;
    });
    if (twice && !deaf_ever) {
        wrong("G2", "a picture is told twice: " + picture.id);
    }
    if (is_new || twice) {
        shown_.push_back({picture, entry->file, brain_});
    }
}

void Witness::tells(const host::Problem& problem) {
    problems_.push_back(problem.text);
}

const Fired* Witness::fired_as(std::uint64_t shot, const std::string& tag) const {
    const auto found = std::find_if(fired_.begin(), fired_.end(), [&](const Fired& one) {
        return one.shot == shot && one.tag == tag;
    });
    return found == fired_.end() ? nullptr : &*found;
}

void Witness::tells(const host::Shot& shot) {
    if (shot.status == host::ShotStatus::fired) {
        if (!unbound_) {
            return wrong("G1", "a shot is said to be fired without CAPTURE");
        }
        Fired& fired = fired_[*std::exchange(unbound_, {}) - 1];
        fired.shot = shot.number;
        fired.tag = shot.tag;
        if (told_) {
            fired.type = told_->file_type.in_force;
            fired.destination = told_->save_destination.in_force;
        }
        // Late is not fired at all.
        for (const Asked& asked : asked_) {
            const auto* capture = std::get_if<host::Capture>(&asked.what);
            if (capture != nullptr && capture->tag == shot.tag &&
                agenda_.now() > turn_of(asked) + capture->expires.value_or(seconds(5)) + soon) {
                wrong("G1", "a shot is fired after it has expired");
            }
        }
        return;
    }
    if (!over_.emplace(shot.number, shot).second) {
        wrong("G1", "a shot is over twice");
    }
    check_over(shot);
}

void Witness::check_over(const host::Shot& shot) {
    const auto found = std::find_if(fired_.begin(), fired_.end(), [&](const Fired& one) {
        return one.brain == brain_ && one.shot == shot.number;
    });
    if (shot.status == host::ShotStatus::refused) {
        if (found != fired_.end()) {
            wrong("G1", "a shot that was fired is said to be refused");
        }
        if (shot.problems.empty()) {
            wrong("G1", "a shot is refused and no problem says why");
        }
        return;
    }
    if (found == fired_.end()) {
        return wrong("G1", "a shot is over that was never fired");
    }
    found->over = agenda_.now();
    found->status = shot.status;
    found->empty = shot.pictures.empty();
    const auto cancelled =
        std::any_of(shot.problems.begin(), shot.problems.end(),
                    [](const host::Problem& problem) { return problem.code == Code::cancelled; });
    if (cancelled && ending_ && agenda_.now() < *ending_until_ && let_go_.count(shot.tag) == 0 &&
        camera_let_go_ == Time{}) {
        wrong("G10", "files on their way are not waited for at the end");
    }
    for (const host::Picture& picture : shot.pictures) {
        if (by_id_.count(picture.id) == 0 || picture.shot != shot.number) {
            wrong("G3", "a shot has a picture that was not told as its own");
        }
    }
    if (shot.status != host::ShotStatus::complete) {
        if (shot.problems.empty()) {
            wrong("G4", "a shot is not complete, and no problem says why");
        }
        return;
    }
    ++shots_complete;
    bool raw = false;
    bool developed = false;
    for (const host::Picture& picture : shot.pictures) {
        const Disk::Entry* entry = disk_.entry_with(picture.id);
        if (entry == nullptr || !disk_.files[entry->file - 1].whole) {
            wrong("G4", "a shot is complete with a file that is not whole, or not there");
        }
        raw = raw || picture.kind == host::Kind::raw;
        developed = developed || picture.kind == host::Kind::developed;
    }
    if (found->destination == host::SaveDestination::card) {
        return;
    }
    const bool needs_raw =
        found->type == host::FileType::raw || found->type == host::FileType::both;
    const bool needs_developed =
        found->type == host::FileType::jpeg || found->type == host::FileType::both;
    if ((needs_raw && !raw) || (needs_developed && !developed) || (!raw && !developed)) {
        wrong("G4", "a shot is complete without all its halves");
    }
}

void Witness::batch_over(const host::SessionState& state) {
    if (unbound_) {
        wrong("G1", "CAPTURE was said and no shot told");
    }
    if (told_ && *told_ != state) {
        wrong("G9", "the state has changed and was not told");
    }
}

void Witness::time_passes() {
    const Time now = agenda_.now();
    if (now < next_look_) {
        return;
    }
    next_look_ = now + milliseconds(500);
    look_for_late_answers();
    if (worker_ != nullptr && !told_to_leave_ && brain_ == disk_.generation) {
        Time since = worker_->stuck_since();
        if (since == Time::max()) {
            return;
        }
        for (const Stop& stop : stops_) {
            since = std::max(since, stop.until);
        }
        if (now > since + seconds(23)) {
            wrong("G6", "a worker hangs, and nobody minds");
        }
    }
}

}  // namespace afternoons
