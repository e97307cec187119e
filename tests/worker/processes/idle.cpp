// What a worker does that has nothing to do.

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <sys/types.h>
#include <thread>

#include "tests/worker/processes/live_worker.h"
#include "tests/worker/processes/pace.h"

namespace {

namespace fs = std::filesystem;

// How often each thread of a process has gone to sleep.
std::map<std::string, long> sleeps_of(pid_t process) {
    std::map<std::string, long> sleeps;
    for (const auto& thread :
         fs::directory_iterator("/proc/" + std::to_string(process) + "/task")) {
        std::ifstream status(thread.path() / "status");
        for (std::string word; status >> word;) {
            if (word == "voluntary_ctxt_switches:") {
                status >> sleeps[thread.path().filename()];
            }
        }
    }
    return sleeps;
}

// The thread that wakes most often is the watchdog.
TEST(Idle, TheWatchdogWakesFourTimesASecond) {
    if (!fs::exists("/proc/self/task")) {
        GTEST_SKIP() << "this system does not tell how often a thread wakes";
    }
    if (sanitized) {
        GTEST_SKIP() << "a sanitizer has a thread of its own";
    }
    constexpr long wake_ups = 10;  // the first of them may be the end of starting
    constexpr std::chrono::milliseconds period{250};
    LiveWorker worker;
    worker.expect_opening();
    const pid_t process = worker.process().process();
    const auto before = sleeps_of(process);
    const auto start = host::Clock::now();
    for (long most = 0; most < wake_ups && host::Clock::now() - start < patience;) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        for (const auto& [thread, sleeps] : sleeps_of(process)) {
            const auto known = before.find(thread);
            most = std::max(most, sleeps - (known == before.end() ? 0 : known->second));
        }
    }
    const auto took = host::Clock::now() - start;
    EXPECT_GE(took, period * (wake_ups - 2));
    // A busy machine may let it sleep longer, though not twice as long.
    EXPECT_LT(took, period * 2 * (wake_ups - 2));
}

}  // namespace
