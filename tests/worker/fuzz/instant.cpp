#include "tests/worker/fuzz/instant.h"

#include <atomic>
#include <ctime>
#include <limits>

#include "session/sony_worker.h"

namespace {

// Thrown by a sleep that is one too many: the way out of a loop that sleeps for ever.
struct Interrupted {};

constexpr unsigned all = std::numeric_limits<unsigned>::max();

// The virtual camera's threads look at the clock too.
std::atomic<std::chrono::nanoseconds::rep> g_forward{0};
unsigned g_sleeps_allowed = all;  // the next one is interrupted

}  // namespace

void put_clock_forward(std::chrono::nanoseconds time) {
    g_forward += time.count();
}

void let_the_watchdog_look(SonyWorker& worker) {
    g_sleeps_allowed = 1;
    try {
        worker.connect_watchdog_thread();
    } catch (const Interrupted&) {
        g_sleeps_allowed = all;
    }
}

extern "C" int __wrap_nanosleep(const timespec* time, timespec*) {
    if (g_sleeps_allowed == 0) {
        throw Interrupted{};
    }
    g_sleeps_allowed -= g_sleeps_allowed == all ? 0 : 1;
    put_clock_forward(std::chrono::seconds(time->tv_sec) + std::chrono::nanoseconds(time->tv_nsec));
    return 0;
}

// std::chrono::steady_clock::now, by the name that the linker knows.
std::chrono::steady_clock::time_point real_now() __asm__(
    "__real__ZNSt6chrono3_V212steady_clock3nowEv");
std::chrono::steady_clock::time_point forward_now() __asm__(
    "__wrap__ZNSt6chrono3_V212steady_clock3nowEv");

std::chrono::steady_clock::time_point forward_now() {
    return real_now() + std::chrono::nanoseconds(g_forward.load());
}
