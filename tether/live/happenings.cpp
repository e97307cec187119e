#include "tether/live/happenings.h"

#include <algorithm>
#include <utility>

namespace tether {

using host::MutexLock;

namespace {

// Of lines, and again of problems: no flood of the one keeps the other away.
constexpr std::size_t most_happening_bytes = std::size_t{4} << 20;

// With its text.
std::size_t weight_of(const host::WireLine& line) {
    return sizeof(Happening) + line.text.size();
}

std::size_t weight_of(const host::Problem& problem) {
    return sizeof(Happening) + problem.text.size();
}

}  // namespace

void Happenings::post(Happening happening) {
    {
        const MutexLock lock(mutex_);
        waiting_.push_back(std::move(happening));
    }
    posted_.notify_one();
}

void Happenings::post(host::SessionState state) {
    {
        const MutexLock lock(mutex_);
        std::erase_if(waiting_, [](const Happening& happening) {
            return std::holds_alternative<host::SessionState>(happening);
        });
        waiting_.emplace_back(std::move(state));
    }
    posted_.notify_one();
}

void Happenings::post(host::WireLine line) {
    {
        const MutexLock lock(mutex_);
        if (line_bytes_ + weight_of(line) > most_happening_bytes) {
            ++left_out_;
            return;
        }
        // The first one behind a gap says how wide it is.
        if (left_out_ > 0) {
            waiting_.emplace_back(LeftOut{std::exchange(left_out_, 0)});
        }
        line_bytes_ += weight_of(line);
        waiting_.emplace_back(std::move(line));
    }
    posted_.notify_one();
}

void Happenings::post(host::Problem problem) {
    {
        const MutexLock lock(mutex_);
        if (problem_bytes_ + weight_of(problem) > most_happening_bytes) {
            return;
        }
        problem_bytes_ += weight_of(problem);
        waiting_.emplace_back(std::move(problem));
    }
    posted_.notify_one();
}

std::optional<Happening> Happenings::next(host::TimePoint deadline) {
    const MutexLock lock(mutex_);
    while (waiting_.empty()) {
        if (!mutex_.wait_until(posted_, deadline)) {
            break;
        }
    }
    if (waiting_.empty()) {
        return std::nullopt;
    }
    Happening happening = std::move(waiting_.front());
    if (const auto* line = std::get_if<host::WireLine>(&happening)) {
        line_bytes_ -= weight_of(*line);
    } else if (const auto* problem = std::get_if<host::Problem>(&happening)) {
        problem_bytes_ -= weight_of(*problem);
    }
    waiting_.pop_front();
    return happening;
}

Happenings& happenings() {
    static Happenings& instance = *new Happenings;
    return instance;
}

host::Listener listener(bool told) {
    host::Listener listener;
    listener.state = [](const host::SessionState& state) {
        happenings().post(state);
    };
    listener.picture = [told](const host::Picture& picture) {
        happenings().post(Happening(picture));
        return told;
    };
    listener.shot = [](const host::Shot& shot) {
        happenings().post(Happening(shot));
    };
    listener.problem = [](const host::Problem& problem) {
        happenings().post(problem);
    };
    listener.line = [](const host::WireLine& line) {
        happenings().post(line);
    };
    return listener;
}

void post_answer(const host::Answer& answer) {
    happenings().post(Happening(Answered{answer}));
}

}  // namespace tether
