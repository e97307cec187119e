// From one set of possible states to the next.

#include <unordered_set>

#include "tests/explore/model/model.h"

namespace explore::model {

namespace {

// How long the watchdog may sleep over: its period, and the horizon of a loop that only polls.
constexpr Time watchdog_slack = 2250 * millisecond;
constexpr Time exit_deadline = 3 * second;

struct Hash {
    std::size_t operator()(const State& state) const {
        std::uint64_t words[sizeof(State) / 8];
        std::memcpy(words, static_cast<const void*>(&state), sizeof state);
        std::uint64_t hash = 0;
        for (const std::uint64_t word : words) {
            hash = (hash ^ word) * 0x9E3779B97F4A7C15ULL;
            hash ^= hash >> 29;
        }
        return hash;
    }
};

// States with everything that they can become by unseen steps before `until`.
Frontier with_unseen_steps(Frontier states, Time until) {
    std::unordered_set<State, Hash> known(states.begin(), states.end());
    const auto add = [&](const State& state) {
        if (known.insert(state).second) {
            states.push_back(state);
        }
    };
    for (std::size_t i = 0; i < states.size(); ++i) {
        State next = states[i];
        if (step_main(next, nullptr, until)) {
            add(next);
        }
        next = states[i];
        if (step_reader(next)) {
            add(next);
        }
        next = states[i];
        if (step_signal_thread(next, nullptr)) {
            add(next);
        }
        next = states[i];
        if (step_watchdog(next, nullptr, until)) {
            add(next);
        }
        for (int slot = 0; slot < 2; ++slot) {
            next = states[i];
            if (step_callback(next, slot, nullptr)) {
                add(next);
            }
        }
    }
    return states;
}

// The exit deadline runs: after the main loop, or because the SDK could not be started.
bool leaves(const State& state) {
    return state.queue_closed || state.at == At::leaving;
}

bool held_up(const State& state, bool writes_line) {
    return writes_line && state.pipe_full;
}

// Whether the clock can move on to `time`: it does not as long as any thread can go on.
bool at_rest_until(const State& state, Time time) {
    switch (main_waits_for(state)) {
        case Waits::nothing:
            if (state.at == At::sleeping
                    ? state.wake < time
                    : state.at != At::next_command || state.queued > 0 || state.input_over) {
                return false;
            }
            break;
        case Waits::line:
            if (!held_up(state, true)) {
                return false;
            }
            break;
        case Waits::call:
            return false;
        case Waits::answer:
            break;
    }
    State copy = state;
    if (step_reader(copy)) {
        return false;
    }
    if ((state.signal_step == 0 && state.pending_signals != 0 && !state.signal_handled) ||
        (state.signal_step != 0 && !held_up(state, state.signal_step == 1))) {
        return false;
    }
    if (state.watchdog_step == 0 ? state.armed != 0 && state.deadline_latest + watchdog_slack < time
                                 : !held_up(state, state.watchdog_step < 3)) {
        return false;
    }
    for (const Calling& calling : state.calling) {
        if (calling.who != 0 && !held_up(state, callback_waits_for_line(calling))) {
            return false;
        }
    }
    return !leaves(state) || state.loop_end + exit_deadline >= time;
}

// What happens to the worker, whatever it is doing. False: it cannot be.
bool befalls(State& state, const Event& event) {
    switch (event.kind) {
        case Kind::host_wrote:
            if (state.inputs == most_queued) {
                return false;
            }
            state.input[state.inputs++] = event.text;
            return true;
        case Kind::host_closed:
            state.input_closed = true;
            return true;
        case Kind::host_stopped:
            state.pipe_full = true;
            return true;
        case Kind::host_reads_again:
            state.pipe_full = false;
            return true;
        case Kind::signal:
            if (!state.signal_handled) {
                state.pending_signals |= 1U << event.number;
            }
            return true;
        case Kind::clock_jumps:
            state.late = true;
            return true;
        case Kind::callback_begins:
            for (Calling& calling : state.calling) {
                if (calling.who == 0) {
                    calling.who = event.who;
                    calling.which = event.which;
                    calling.text = event.text;
                    calling.number = event.number;
                    return true;
                }
            }
            return false;
        case Kind::killed:
            // Before the signals are blocked, and so before the first line.
            return state.at == At::banner;
        case Kind::exits_at_once:
            return leaves(state) && event.number == (state.queue_closed ? 0U : 1U) &&
                   event.time >= state.loop_end + exit_deadline;
        default:
            return false;
    }
}

}  // namespace

Frontier after(const Frontier& frontier, const Event& event) {
    Frontier prompt;
    Frontier late;
    for (const State& state : frontier) {
        (state.late ? late : prompt).push_back(state);
    }
    if (!prompt.empty() && prompt.front().now < event.time) {
        Frontier rested;
        for (State& state : with_unseen_steps(prompt, prompt.front().now)) {
            if (at_rest_until(state, event.time)) {
                state.now = event.time;
                rested.push_back(state);
            }
        }
        prompt = rested;
    }
    Frontier before = with_unseen_steps(prompt, event.time);
    for (State& state : with_unseen_steps(late, event.time)) {
        before.push_back(state);
    }

    Frontier result;
    std::unordered_set<State, Hash> known;
    const auto add = [&](State& state) {
        state.now = event.time;
        if (known.insert(state).second) {
            result.push_back(state);
        }
    };
    for (const State& state : before) {
        State next = state;
        if (befalls(next, event)) {
            add(next);
        }
        next = state;
        if (step_main(next, &event, event.time)) {
            add(next);
        }
        next = state;
        if (step_signal_thread(next, &event)) {
            add(next);
        }
        next = state;
        if (step_watchdog(next, &event, event.time)) {
            add(next);
        }
        for (int slot = 0; slot < 2; ++slot) {
            next = state;
            if (step_callback(next, slot, &event)) {
                add(next);
            }
        }
    }
    return result;
}

}  // namespace explore::model
