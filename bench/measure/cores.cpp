#include "bench/measure/cores.h"

#include <thread>

#if defined(__linux__)
#include <sched.h>

namespace {

const cpu_set_t& allowed_at_start() {
    static const cpu_set_t allowed = [] {
        cpu_set_t set;
        CPU_ZERO(&set);
        sched_getaffinity(0, sizeof set, &set);
        return set;
    }();
    return allowed;
}

}  // namespace

bool keep_to_cores(int count) {
    cpu_set_t chosen;
    CPU_ZERO(&chosen);
    for (int core = 0; core < CPU_SETSIZE && CPU_COUNT(&chosen) < count; ++core) {
        if (CPU_ISSET(core, &allowed_at_start())) {
            CPU_SET(core, &chosen);
        }
    }
    return CPU_COUNT(&chosen) == count && sched_setaffinity(0, sizeof chosen, &chosen) == 0;
}

int cores() {
    return CPU_COUNT(&allowed_at_start());
}

#else

bool keep_to_cores(int) {
    return false;
}

int cores() {
    return static_cast<int>(std::thread::hardware_concurrency());
}

#endif
