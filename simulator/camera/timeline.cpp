#include "simulator/camera/timeline.h"

#include <map>
#include <thread>
#include <utility>

#include "simulator/camera/state.h"
#include "simulator/sdk/threads.h"

namespace camera_sim {
namespace {

struct Timeline {
    std::multimap<Clock::time_point, std::function<void()>> steps;
    std::condition_variable changed;
    std::thread thread;
    bool ending = false;
};

// Never destroyed: its thread may outlive main.
Timeline& g_timeline SIM_ANNOTATION(guarded_by(g_lock)) = *new Timeline;

void run_steps() {
    Hold hold;
    Timeline& timeline = g_timeline;
    while (!timeline.ending) {
        const auto first = timeline.steps.begin();
        if (first == timeline.steps.end()) {
            hold.wait(timeline.changed);
        } else if (Clock::now() < first->first) {
            hold.wait_until(timeline.changed, first->first);
        } else {
            const std::function<void()> step = std::move(first->second);
            timeline.steps.erase(first);
            step();
            // Steps without end must not keep the lock from everybody else.
            hold.without([] { std::this_thread::yield(); });
        }
    }
}

}  // namespace

void after(Duration delay, std::function<void()> step) {
    if (delay <= Duration::zero()) {
        step();
        return;
    }
    if (state().ending) {
        return;
    }
    g_timeline.steps.emplace(Clock::now() + delay, std::move(step));
    if (!g_timeline.thread.joinable()) {
        g_timeline.thread = start_thread(run_steps);
    }
    g_timeline.changed.notify_one();
}

void end_timeline(Hold& hold) {
    g_timeline.ending = true;
    g_timeline.changed.notify_one();
    std::thread thread = std::exchange(g_timeline.thread, {});
    if (thread.joinable()) {
        hold.without([&thread] { thread.join(); });
    }
    g_timeline.steps.clear();
    g_timeline.ending = false;
}

}  // namespace camera_sim
