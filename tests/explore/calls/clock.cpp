// The steady clock and sleeping.

#include <chrono>
#include <cstdint>
#include <ctime>

#include "tests/explore/calls/worker_call.h"

using namespace explore;

WORKER_CALL std::chrono::steady_clock::time_point __wrap__ZNSt6chrono3_V212steady_clock3nowEv() {
    Fiber& self = *run.self;
    self.hash = mix(self.hash, static_cast<std::uint64_t>(run.now));
    // A machine that has been up for a day.
    constexpr std::chrono::hours up{24};
    return std::chrono::steady_clock::time_point(up + std::chrono::nanoseconds(run.now));
}

WORKER_CALL int __wrap_nanosleep(const timespec* length, timespec*) {
    nap(length->tv_sec * second + length->tv_nsec);
    return 0;
}
