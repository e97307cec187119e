#include "tests/host/afternoons/world.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace afternoons {

using host::WorkerEnd;
using namespace host::brain;

World::World(bool tell_it)
    : tell_it_(tell_it), disk_(agenda_, *this), witness_(agenda_, camera_, disk_) {
    begin_brain();
}

World::~World() = default;

Outcome play(const Story& story, bool tell_it) {
    World world(tell_it);
    world.play(story);
    return world.outcome();
}

Outcome World::outcome() {
    return {witness_.failure, told_, witness_.pictures_told, witness_.shots_complete, calls_};
}

void World::note(const std::string& text) {
    const bool fence = text == "    > PRIME" || text == "    < PRIME_DONE|OK";
    if (!tell_it_ || (fence && all_well_)) {
        return;
    }
    char when[32];
    std::snprintf(when, sizeof when, "%10.3f  ",
                  std::chrono::duration<double>(agenda_.now() - seconds(1000)).count());
    told_.push_back(when + text);
}

void World::play(const Story& story) {
    Time when = agenda_.now();
    for (const Event& event : story.events) {
        when += event.after;
        run_until(when);
        if (witness_.failure) {
            return;
        }
        note("** " + to_text(event).substr(to_text(event).find(' ') + 1));
        happen(event);
        when = std::max(when, agenda_.now());
    }
    finale();
}

// The world goes on, and whenever something is there to be read, or the brain wants to be called,
// the brain is.
void World::run_until(Time end) {
    int at_once = 0;
    while (!witness_.failure) {
        const Time now = agenda_.now();
        const Time wake = !brain_           ? Time::max()
                          : !inbox_.empty() ? brain_still_until_
                                            : std::max(brain_->wake_at(), brain_still_until_);
        const bool to_read = brain_ && now >= brain_still_until_ && !inbox_.empty();
        const Time next = to_read ? now : std::max(now, std::min({agenda_.next(), wake, end}));
        agenda_.run_until(next);
        if (brain_ && next >= brain_still_until_ && (wake <= next || !inbox_.empty())) {
            at_once = next == now && inbox_.empty() ? at_once + 1 : 0;
            if (at_once > 20) {
                wrong("G1", "the brain wants to be called again and again");
            }
            hear_all();
        }
        witness_.time_passes();
        const bool idle =
            !brain_ || next < brain_still_until_ || (inbox_.empty() && brain_->wake_at() > next);
        if (next >= end && agenda_.next() > end && idle) {
            return;
        }
    }
}

void World::hear_all() {
    while (brain_ && !inbox_.empty()) {
        const Input input = std::move(inbox_.front());
        inbox_.pop_front();
        deliver(input);
    }
    if (!brain_) {
        return;
    }
    tell_time();
    brain_->pass(agenda_.now());
    ++calls_;
    carry_out();
    witness_.batch_over(brain_->state());
}

void World::tell_time() {
    brain_->tell(TimeOfDayIs{day_ + std::chrono::duration_cast<milliseconds>(agenda_.now())},
                 agenda_.now());
}

void World::deliver(const Input& input) {
    const Time now = agenda_.now();
    ++calls_;
    if (const auto* line = std::get_if<Line>(&input)) {
        Process* process = at_work();
        if (process == nullptr || process->run != line->run) {
            return;  // of one that was given up
        }
        witness_.heard(line->text, line->forged);
        note("    < " + line->text);
        brain_->hear(line->text, now);
    } else if (const auto* news = std::get_if<News>(&input)) {
        if (const auto* ended = std::get_if<WorkerEnded>(news)) {
            witness_.worker_news(ended->run);
        }
        brain_->tell(*news, now);
    } else if (const auto* answer = std::get_if<host::FileAnswer>(&input)) {
        brain_->tell(*answer, now);
    } else if (const auto* asked = std::get_if<AskedFor>(&input)) {
        witness_.asked(asked->id, asked->what);
        brain_->ask(asked->id, asked->what, now);
    }
    carry_out();
}

void World::carry_out() {
    for (const Effect& effect : brain_->take()) {
        carry_out(effect);
    }
}

void World::carry_out(const Effect& effect) {
    if (const auto* say = std::get_if<Say>(&effect)) {
        Process* process = at_work();
        note("    > " + say->line);
        witness_.says(say->line, process != nullptr && process->worker->alive());
        if (process != nullptr) {
            process->worker->hear(say->line,
                                  say->line == "CAPTURE" ? witness_.last_capture : std::nullopt);
        }
    } else if (const auto* start = std::get_if<StartWorker>(&effect)) {
        start_worker(*start);
    } else if (const auto* end = std::get_if<EndWorker>(&effect)) {
        note("the worker of " + end->run + " is ended");
        witness_.ends_worker(*end);
        for (const auto& process : processes_) {
            if (process->run == end->run && process->brain == disk_.generation) {
                process->climb(end->rung);
            }
        }
    } else if (const auto* work = std::get_if<host::FileWork>(&effect)) {
        disk_.ask(*work);
    } else if (const auto* changed = std::get_if<StateChanged>(&effect)) {
        if (tell_it_) {
            std::string text = "state " + std::string(host::word(changed->state.state));
            for (const host::Problem& problem : changed->state.problems) {
                text += " [" + std::string(host::word(problem.code)) + "]";
            }
            note(text);
        }
        witness_.tells(changed->state);
    } else if (const auto* came = std::get_if<PictureCame>(&effect)) {
        note("picture " + came->picture.id + " " + came->picture.camera_name + " of shot " +
             (came->picture.shot ? std::to_string(*came->picture.shot) : "-"));
        witness_.tells(came->picture, hearing_);
        if (hearing_) {
            disk_.ask(host::Told{came->picture.id});
        }
    } else if (const auto* shot = std::get_if<ShotChanged>(&effect)) {
        note("shot " + std::to_string(shot->shot.number) + " " +
             std::string(host::word(shot->shot.status)));
        witness_.tells(shot->shot);
    } else if (const auto* problem = std::get_if<ProblemCame>(&effect)) {
        note("problem " + std::string(host::word(problem->problem.code)) + ": " +
             problem->problem.text);
        witness_.tells(problem->problem);
    } else if (const auto* reply = std::get_if<Reply>(&effect)) {
        note("request " + std::to_string(reply->request) + " is answered");
        witness_.replies(reply->request, reply->answer);
    }
}

World::Process* World::at_work() {
    if (processes_.empty() || processes_.back()->brain != disk_.generation) {
        return nullptr;
    }
    return processes_.back().get();
}

void World::start_worker(const StartWorker& work) {
    const Nature nature = std::exchange(next_nature_, Nature::usual);
    note("a worker is started in " + work.staging);
    witness_.starts_worker(work.run);
    if (nature == Nature::cannot_start) {
        inbox_.push_back(News(WorkerNotStarted{work.run, "No such file."}));
        return;
    }
    const Number number = 5000 + processes_.size();
    processes_.push_back(std::make_unique<Process>(*this, work.run, number, work.staging, nature));
    witness_.worker_started(work.run, processes_.back()->worker.get());
    inbox_.push_back(News(WorkerStarted{work.run, static_cast<std::int64_t>(number)}));
    processes_.back()->worker->start();
}

World::Process::Process(World& the_world, std::string the_run, Number the_number,
                        const std::string&, Nature nature)
    : world(the_world),
      run(std::move(the_run)),
      number(the_number),
      brain(the_world.disk_.generation),
      worker(std::make_unique<Worker>(the_world.agenda_, the_world.camera_, *this, "", "both",
                                      nature)) {}

void World::Process::climb(Time rung) {
    const auto step = [this](Time when, WorkerEnd how, void (Worker::*what)()) {
        world.agenda_.after(when, [this, how, what] {
            if (worker->alive() && brain == world.disk_.generation) {
                by = how;
                (worker.get()->*what)();
            }
        });
    };
    by = WorkerEnd::quit;
    worker->hear("QUIT");
    step(rung, WorkerEnd::input, &Worker::close_input);
    step(2 * rung, WorkerEnd::sigterm, &Worker::terminate);
    step(3 * rung, WorkerEnd::sigkill, &Worker::kill);
}

void World::Process::line(const std::string& text, bool forged) {
    if (brain == world.disk_.generation) {
        world.inbox_.push_back(Line{run, text, forged});
    }
}

void World::Process::ended(int status) {
    world.note("the worker of " + run + " has ended with " + std::to_string(status));
    world.witness_.worker_ended(run);
    if (brain == world.disk_.generation) {
        world.inbox_.push_back(News(WorkerEnded{run, by, status}));
    }
}

Press* World::Process::pressed(std::optional<Number> capture) {
    Press press;
    press.number = world.presses_.size() + 1;
    press.capture = capture;
    world.presses_.push_back(press);
    return &world.presses_.back();
}

File* World::Process::landed(const Press& press, const std::string& name, host::Kind kind,
                             bool whole, const std::string& folder) {
    File* file = world.disk_.land(press, name, kind, whole, folder);
    if (file != nullptr) {
        world.witness_.pressed(press);
        world.note("file " + name + " of press " + std::to_string(press.number) + " is there");
    }
    return file;
}

bool World::Process::taken(const std::string& folder, const std::string& stem) {
    return world.disk_.taken(folder, stem);
}

void World::begin_brain() {
    host::Wishes wishes;
    brain_ = std::make_unique<Brain>(wishes);
    witness_.brain_begins(disk_.generation);
    shut_ = false;
    tell_time();
}

// The process is gone with everything in it; its children read the end of their input.
void World::kill_brain() {
    brain_.reset();
    witness_.brain_ends();
    inbox_.clear();
    for (const auto& process : processes_) {
        if (process->brain == disk_.generation) {
            process->worker->close_input();
        }
    }
    disk_.forget_work();
    brain_still_until_ = {};
}

void World::answer(const host::FileAnswer& answer) {
    inbox_.push_back(answer);
}

bool World::holds_lock(const std::string& run) const {
    const Disk::Run& known = disk_.runs.at(run);
    const std::string& first = known.moved_from.empty() ? run : known.moved_from;
    if (first != run) {
        return holds_lock(first);
    }
    return std::any_of(processes_.begin(), processes_.end(), [&](const auto& process) {
        return process->run == run && process->worker->alive();
    });
}

bool World::is_written_to(const std::string& staging) const {
    return std::any_of(processes_.begin(), processes_.end(), [&](const auto& process) {
        return process->worker->alive() && process->worker->writes_to() == staging;
    });
}

void World::terminate(const std::string& run) {
    for (const auto& process : processes_) {
        if (process->run == run) {
            process->worker->terminate();
        }
    }
}

void World::kill(const std::string& run) {
    for (const auto& process : processes_) {
        if (process->run == run) {
            process->worker->kill();
        }
    }
}

void World::wrong(const std::string& guarantee, const std::string& text) {
    witness_.wrong(guarantee, text);
}

}  // namespace afternoons
