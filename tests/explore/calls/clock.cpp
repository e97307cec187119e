// The steady clock and sleeping.

#include <cstdint>
#include <ctime>

#include "tests/explore/calls/worker_call.h"

using namespace explore;

// std::chrono::steady_clock::now. A time point is returned as the one number that it holds.
WORKER_CALL std::int64_t __wrap__ZNSt6chrono3_V212steady_clock3nowEv() {
    Fiber& self = *run.self;
    self.hash = mix(self.hash, static_cast<std::uint64_t>(run.now));
    // A machine that has been up for a day.
    constexpr Time up = Time{24} * 3600 * second;
    return up + run.now;
}

WORKER_CALL int __wrap_nanosleep(const timespec* length, timespec*) {
    nap(length->tv_sec * second + length->tv_nsec);
    return 0;
}
