// What the brain wants done.
#include <utility>

#include "host/camera/loop.h"
#include "host/camera/uptime.h"

namespace host {

void Loop::carry_out() {
    if (brain_.banner() != banner_told_) {
        banner_told_ = brain_.banner();
        banner_->set(banner_told_);
    }
    for (std::vector<brain::Effect> effects = brain_.take(); !effects.empty();
         effects = brain_.take()) {
        for (brain::Effect& effect : effects) {
            std::visit([this](auto& one) { carry_out(one); }, effect);
        }
    }
}

// The brain is told of a full pipe when all that it wants now has been done.
void Loop::carry_out(brain::Say& effect) {
    if (!worker_) {
        return;
    }
    show(WireLine::Direction::to_worker, effect.line);
    if (!worker_->say(effect.line)) {
        inbox_->post(brain::WorkerInputFull{worker_->run()});
    }
}

// One that could not be ended is left behind here. Comes of what the disk says, never of a line:
// nobody is reading from the worker whose place is taken.
void Loop::carry_out(brain::StartWorker& effect) {
    std::string why;
    last_words_ = {};
    worker_ = RunningWorker::start(options_, effect, inbox_, why);
    if (!worker_) {
        inbox_->post(brain::WorkerNotStarted{effect.run, why + "."});
    }
}

void Loop::carry_out(brain::EndWorker& effect) {
    if (worker_ && worker_->run() == effect.run) {
        worker_->end(effect.rung, now_);
    }
}

void Loop::climb() {
    if (worker_ && worker_->climb(now_)) {
        show(WireLine::Direction::to_worker, "QUIT");
    }
}

void Loop::carry_out(FileWork& effect) {
    disk_.ask(std::move(effect));
}

void Loop::carry_out(brain::StateChanged& effect) {
    if (options_.listener.state) {
        options_.listener.state(effect.state);
    }
}

void Loop::carry_out(brain::PictureCame& effect) {
    if (options_.listener.picture && options_.listener.picture(effect.picture)) {
        disk_.ask(Told{effect.picture.id});
    }
}

void Loop::carry_out(brain::ShotChanged& effect) {
    if (options_.listener.shot) {
        options_.listener.shot(effect.shot);
    }
}

void Loop::carry_out(brain::ProblemCame& effect) {
    if (options_.listener.problem) {
        options_.listener.problem(effect.problem);
    }
}

void Loop::carry_out(brain::Reply& effect) {
    if (const auto waiting = waiting_.extract(effect.request)) {
        waiting.mapped()(effect.answer);
    }
}

void Loop::show(WireLine::Direction direction, std::string_view text) {
    if (options_.listener.line) {
        options_.listener.line({direction, std::string(text), now_ - begun_});
    }
}

}  // namespace host
