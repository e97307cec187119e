#include "tests/host/brain/stage.h"

#include <algorithm>
#include <functional>
#include <type_traits>

#include "host/process/fields.h"

namespace host::brain {
namespace {

template <typename Kind, typename Part>
auto each(const std::vector<Effect>& log, Part part) {
    std::vector<std::decay_t<std::invoke_result_t<Part, const Kind&>>> found;
    for (const Effect& effect : log) {
        if (const auto* one = std::get_if<Kind>(&effect)) {
            found.push_back(std::invoke(part, *one));
        }
    }
    return found;
}

bool contains(const std::vector<Problem>& problems, Code code) {
    return std::any_of(problems.begin(), problems.end(),
                       [code](const Problem& problem) { return problem.code == code; });
}

}  // namespace

Wishes wishes(SaveDestination destination, std::optional<FileType> type) {
    Wishes all;
    all.save_destination = destination;
    all.file_type = type;
    return all;
}

Capture tagged(const std::string& tag) {
    Capture capture;
    capture.tag = tag;
    return capture;
}

Capture expiring(Time after) {
    Capture capture;
    capture.expires = after;
    return capture;
}

Configure folder(const std::string& value) {
    Configure configure;
    configure.folder = value;
    return configure;
}

Configure type(FileType value) {
    Configure configure;
    configure.file_type = value;
    return configure;
}

ReadyStage::ReadyStage(Wishes wishes) : Stage(std::move(wishes)) {
    get_ready();
}

ReadyStage::ReadyStage(Dial of_the_camera) {
    dial = std::move(of_the_camera.at);
    get_ready();
}

Stage::Stage(Wishes wishes) : brain(std::move(wishes)) {
    tell(TimeOfDayIs{std::chrono::milliseconds(1'700'000'000'000)});
}

void Stage::get_idle() {
    ask(Start{});
    after(milliseconds(1));
    EXPECT_EQ(word(state().state), "idle");
    forget();
}

void Stage::get_ready() {
    ask(Connect{});
    after(seconds(2));
    EXPECT_EQ(word(state().state), "ready");
    forget();
}

void Stage::hear(std::string_view line) {
    brain.hear(line, now);
    work();
}

void Stage::tell(const News& news) {
    brain.tell(news, now);
    work();
}

void Stage::answer(const FileAnswer& answer) {
    brain.tell(answer, now);
    work();
}

RequestId Stage::ask(const Request& request) {
    brain.ask(++last_request_, request, now);
    work();
    return last_request_;
}

void Stage::after(Time duration) {
    const Time end = now + duration;
    // What the disk answers behind pass() may be a thing to be decided at once.
    int at_once = 0;
    for (;;) {
        const Time line = lines_.empty() ? Time::max() : lines_.front().at;
        const Time next = std::max(now, std::min({end, brain.wake_at(), line}));
        now = next;
        hear_what_is_due();
        brain.pass(now);
        work();
        if (now >= end) {
            return;
        }
        at_once = brain.wake_at() <= now ? at_once + 1 : 0;
        if (at_once > 1) {
            ADD_FAILURE() << "the brain wants to be called again at once";
            return;
        }
    }
}

void Stage::stand_still(Time duration) {
    now += duration;
    hear_what_is_due();
    brain.pass(now);
    work();
}

void Stage::hear_what_is_due() {
    while (!lines_.empty() && lines_.front().at <= now) {
        const std::string text = lines_.front().text;
        lines_.pop_front();
        hear_all(text);
    }
}

void Stage::lose() {
    session = false;
    hear("DISCONNECTED|");
}

void Stage::unplug() {
    camera_there = false;
    lose();
}

void Stage::bring_back() {
    session = true;
    hear("CONNECTED|MODEL-A");
}

FolderOpened Stage::opened(const std::string& folder) {
    return {asked_of_disk<OpenFolder>().at(0).ticket, folder, {}, {}, 0, {}};
}

void Stage::refuse_folder(Code code, const std::string& text) {
    answer(FolderNotOpened{asked_of_disk<OpenFolder>().at(0).ticket, {code, text, {}, {}}});
}

RequestId Stage::shoot(const std::string& tag) {
    const RequestId request = ask(tagged(tag));
    after(milliseconds(800));
    return request;
}

void Stage::file(const std::string& name) {
    staged.insert(name);
    report(name);
}

void Stage::report(const std::string& name) {
    say_landed(name, "/shots/.incoming/" + run + "/");
    after(milliseconds(20));
}

void Stage::say_landed(const std::string& name, const std::string& folder) {
    hear_all("LOG|[SONY] landed " + name);
    hear_all("DOWNLOADED|" + escape_field(folder + name));
}

// A line break in a name makes several lines of one.
void Stage::hear_all(const std::string& text) {
    std::size_t at = 0;
    for (std::size_t end; (end = text.find('\n', at)) != std::string::npos; at = end + 1) {
        hear(text.substr(at, end - at));
    }
    hear(text.substr(at));
}

// Everything that the brain wants is done at once, and what comes of it is told.
void Stage::work() {
    for (;;) {
        const std::vector<Effect> effects = brain.take();
        for (const Effect& effect : effects) {
            log_.push_back(effect);
            carry_out(effect);
        }
        if (disk_answers && !disk_work_.empty()) {
            const FileWork next = disk_work_.front();
            disk_work_.pop_front();
            answer_disk(next);
        } else if (effects.empty()) {
            return;
        }
    }
}

void Stage::carry_out(const Effect& effect) {
    if (const auto* say = std::get_if<Say>(&effect)) {
        obey(say->line);
    } else if (const auto* start = std::get_if<StartWorker>(&effect)) {
        session = false;
        lines_.clear();
        if (!worker_starts) {
            return brain.tell(WorkerNotStarted{start->run, "No such file."}, now);
        }
        brain.tell(WorkerStarted{start->run, 4711}, now);
        worker_says("CPP_WORKER|START sony-1.0");
        if (worker_gets_ready) {
            worker_says("READY|OK");
        }
    } else if (const auto* end = std::get_if<EndWorker>(&effect)) {
        if (worker_ends) {
            lines_.clear();
            brain.tell(WorkerEnded{end->run, WorkerEnd::quit, 0}, now);
        }
    } else if (const auto* work = std::get_if<FileWork>(&effect)) {
        disk_work_.push_back(*work);
    } else if (const auto* reply = std::get_if<Reply>(&effect)) {
        answers_[reply->request].push_back(reply->answer);
    }
}

void Stage::worker_says(const std::string& line) {
    busy_until_ = std::max(busy_until_, now);
    lines_.push_back({busy_until_, line});
}

void Stage::obey(const std::string& command) {
    if (!worker_answers) {
        return;
    }
    const auto rest = [&] {
        return command.substr(command.find('|') + 1);
    };
    if (command == "PRIME") {
        worker_says("PRIME_DONE|OK");
    } else if (command.starts_with("SET_DOWNLOAD_DIR|")) {
        worker_says("DOWNLOAD_DIR|" + rest());
    } else if (command.starts_with("SET_SAVE_DEST|")) {
        destination_ = rest();
        if (session && !takes_destination) {
            worker_says(
                "LOG|[SONY] could not set the save destination (0x00008000) — the camera keeps its "
                "own setting");
        } else if (session) {
            worker_says("SAVE_DEST|" + (card ? destination_ : "disk"));
        }
    } else if (command.starts_with("SET_FILE_TYPE|")) {
        if (!session) {
            return worker_says("ERROR|Camera not connected");
        }
        if (!takes_type) {
            worker_says("LOG|[SONY] the camera would not change its file type (0x00008402)");
            worker_says("ERROR|The camera would not change its file type — set it on the camera");
        } else {
            dial = rest();
        }
        if (type_readable) {
            worker_says("FILE_TYPE|" + dial);
        }
    } else if (command == "CONNECT") {
        worker_says("STATUS|Looking for a camera");
        if (!camera_there) {
            return worker_says("ERROR|Camera not detected");
        }
        worker_says("LOG|[SONY] camera \"" + camera_name + "\" over USB");
        worker_says("STATUS|Opening camera session");
        if (camera_answers) {
            session = true;
            worker_says("CONNECTED|" + escape_field(camera_name));
            if (takes_destination) {
                worker_says("SAVE_DEST|" + (card ? destination_ : "disk"));
            }
            worker_says("FILE_TYPE|" + dial);
        }
    } else if (command == "DISCONNECT") {
        session = false;
        worker_says("DISCONNECTED|");
    } else if (command == "CAPTURE") {
        if (!session) {
            return worker_says("ERROR|Camera not connected");
        }
        busy_until_ = std::max(busy_until_, now) + milliseconds(735);
        worker_says("REMOTE_CAPTURED|OK");
    }
}

void Stage::answer_disk(const FileWork& work) {
    if (const auto* open = std::get_if<OpenFolder>(&work)) {
        FolderOpened opened;
        opened.ticket = open->ticket;
        opened.folder = open->folder.starts_with("/") ? open->folder : "/" + open->folder;
        opened.room = room;
        brain.tell(opened, now);
    } else if (const auto* run_work = std::get_if<OpenRun>(&work)) {
        run = "run-" + std::to_string(++runs_);
        brain.tell(RunOpened{run_work->ticket, run, run_work->folder + "/.incoming/" + run, 7},
                   now);
    } else if (const auto* sweep = std::get_if<SweepRun>(&work)) {
        brain.tell(RunSwept{sweep->ticket, {}, {}}, now);
    } else if (const auto* one = std::get_if<Examine>(&work)) {
        const Examined found = examine(*one);
        examined_[one->ticket] = found;
        brain.tell(found, now);
    } else if (const auto* place = std::get_if<Place>(&work)) {
        const Examined found = examined_[place->ticket];
        if (!takes_files) {
            examined_.erase(place->ticket);
            return brain.tell(
                NotPlaced{
                    place->ticket,
                    {Code::picture_not_placed, found.camera_name + " stays where it is.", {}, {}}},
                now);
        }
        Picture picture;
        picture.id = "id-" + std::to_string(place->ticket);
        picture.shot = place->shot;
        picture.tag = place->tag;
        picture.pair = place->pair;
        picture.kind = found.kind;
        picture.format = found.format;
        picture.path = "/shots/" + found.camera_name;
        picture.camera_name = found.camera_name;
        picture.bytes = found.bytes;
        picture.whole = found.whole;
        picture.after = place->after;
        staged.erase(found.camera_name);
        placed_.insert(found.camera_name);
        brain.tell(Placed{place->ticket, picture}, now);
    } else if (const auto* look = std::get_if<LookAtFolder>(&work)) {
        brain.tell(FolderLooked{look->ticket, folder_there, folder_there, true, room}, now);
    }
}

Examined Stage::examine(const Examine& work) {
    Examined found;
    found.ticket = work.ticket;
    const std::string staging = "/.incoming/" + work.run + "/";
    const std::size_t inside = work.path.find(staging);
    found.camera_name = work.path.substr(
        inside == std::string::npos ? work.path.find_last_of('/') + 1 : inside + staging.size());
    if (inside == std::string::npos) {
        found.verdict = Verdict::outside;
        return found;
    }
    if (staged.count(found.camera_name) == 0) {
        found.verdict =
            placed_.count(found.camera_name) == 0 ? Verdict::not_there : Verdict::reported_before;
        return found;
    }
    const bool examined = std::any_of(examined_.begin(), examined_.end(), [&](const auto& known) {
        return known.second.verdict == Verdict::there &&
               known.second.camera_name == found.camera_name &&
               placed_.count(found.camera_name) == 0;
    });
    if (examined) {
        found.verdict = Verdict::reported_before;
        return found;
    }
    const std::size_t dot = found.camera_name.find_last_of('.');
    const std::string ending = found.camera_name.substr(dot + 1);
    found.verdict = Verdict::there;
    found.stem = found.camera_name.substr(0, dot);
    found.kind = ending == "ARW" || ending == "DNG"   ? Kind::raw
                 : ending == "JPG" || ending == "HIF" ? Kind::developed
                                                      : Kind::other;
    found.bytes = file_size;
    found.whole = damaged.count(found.camera_name) == 0;
    found.why = found.whole ? "" : why;
    found.room = room;
    return found;
}

std::vector<std::string> Stage::said() {
    return each<Say>(log_, &Say::line);
}

bool Stage::said(const std::string& line) {
    return times_said(line) != 0;
}

std::size_t Stage::times_said(const std::string& line) {
    const std::vector<std::string> lines = said();
    return static_cast<std::size_t>(std::count(lines.begin(), lines.end(), line));
}

std::vector<State> Stage::states() {
    std::vector<State> found =
        each<StateChanged>(log_, [](const StateChanged& changed) { return changed.state.state; });
    found.erase(std::unique(found.begin(), found.end()), found.end());
    return found;
}

std::vector<Picture> Stage::pictures() {
    return each<PictureCame>(log_, &PictureCame::picture);
}

std::vector<Shot> Stage::shots() {
    return each<ShotChanged>(log_, &ShotChanged::shot);
}

std::vector<Problem> Stage::problems() {
    return each<ProblemCame>(log_, &ProblemCame::problem);
}

bool Stage::told(Code code) {
    return contains(problems(), code);
}

std::vector<StartWorker> Stage::workers() {
    return each<StartWorker>(log_, std::identity{});
}

std::vector<EndWorker> Stage::ladders() {
    return each<EndWorker>(log_, std::identity{});
}

void Stage::forget() {
    log_.clear();
}

bool Stage::is_answered(RequestId request) const {
    return answers_.count(request) != 0;
}

std::size_t Stage::answers(RequestId request) const {
    const auto found = answers_.find(request);
    return found == answers_.end() ? 0 : found->second.size();
}

bool Stage::stands(Code code) const {
    return contains(state().problems, code);
}

Outcome Stage::outcome(RequestId capture) {
    const Shot shot = answer_to<Shot>(capture);
    return {shot.status, shot.problems.at(0).code};
}

Problem Stage::standing(Code code) const {
    for (const Problem& problem : state().problems) {
        if (problem.code == code) {
            return problem;
        }
    }
    ADD_FAILURE() << word(code) << " does not stand";
    return {};
}

}  // namespace host::brain
