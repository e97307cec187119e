#include "tether/console/disk.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <system_error>
#include <thread>
#include <utility>

#include "host/process/clock.h"
#include "host/process/mutex.h"

namespace console {

using host::MutexLock;

namespace {

// A disk that has been asleep answers again at the next try.
constexpr std::chrono::seconds longest_look{5};
// While so many wait for a disk for which nobody waits any more, nothing else is asked of one.
constexpr int most_left_behind = 16;

std::atomic<int> g_left_behind{0};

struct Work {
    host::Mutex mutex;
    std::condition_variable changed;
    bool done HOST_GUARDED_BY(mutex) = false;
    bool left_behind HOST_GUARDED_BY(mutex) = false;
};

void finish(Work& work) {
    {
        const MutexLock lock(work.mutex);
        work.done = true;
        g_left_behind -= work.left_behind ? 1 : 0;
    }
    work.changed.notify_all();
}

}  // namespace

bool done_in_time(std::function<void()> work) {
    if (g_left_behind >= most_left_behind) {
        return false;
    }
    const auto state = std::make_shared<Work>();
    try {
        std::thread([state, work = std::move(work)] {
            work();
            finish(*state);
        }).detach();
    } catch (const std::system_error&) {
        return false;  // the system has no thread left
    }
    const host::TimePoint deadline = host::after(longest_look);
    const MutexLock lock(state->mutex);
    while (!state->done && state->mutex.wait_until(state->changed, deadline)) {}
    state->left_behind = !state->done;
    g_left_behind += state->left_behind ? 1 : 0;
    return state->done;
}

}  // namespace console
