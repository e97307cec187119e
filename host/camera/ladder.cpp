#include "host/camera/ladder.h"

namespace host {

void Ladder::begin(Time rung, Time now) {
    if (!begun_) {
        begun_ = true;
        rung_ = rung;
        next_at_ = now;
    }
}

std::optional<WorkerEnd> Ladder::next(Time now) {
    if (now < next_at_) {
        return std::nullopt;
    }
    switch (step_) {
        case WorkerEnd::gone:
            step_ = WorkerEnd::quit;
            break;
        case WorkerEnd::quit:
            step_ = WorkerEnd::input;
            break;
        case WorkerEnd::input:
            step_ = WorkerEnd::sigterm;
            break;
        case WorkerEnd::sigterm:
        case WorkerEnd::sigkill:
            step_ = WorkerEnd::sigkill;
            break;
    }
    next_at_ = step_ == WorkerEnd::sigkill ? Time::max() : now + rung_;
    return step_;
}

void Ladder::missed(Time now) {
    if (next_at_ != Time::max()) {
        next_at_ = now;
    }
}

}  // namespace host
