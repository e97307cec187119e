// A host that dies, at whatever moment, leaves no worker behind.

#include <gtest/gtest.h>
#include <ostream>
#include <random>
#include <signal.h>
#include <string>

#include "tests/worker/processes/live_worker.h"
#include "tests/worker/processes/pace.h"

namespace {

// A shell is the host: it tells its number and talks to the worker until it is killed. The worker's
// lines, and then its status, come out here; what the shell says of the killing does not.
struct Host {
    const char* name;
    const char* script;
};

// Goes on writing whatever the worker says; its death is the end of the worker's input.
constexpr const char* writing_host = R"(
    exec 4>&2 2>/dev/null
    {
        {
            sh -c 'echo $PPID' >&3
            printf 'CONNECT\nCAPTURE\n'
            while :; do echo PRIME; done
        } | "$@" 2>&4
        echo "status $?"
    } 3>&1)";

// Writes one line for each that it reads; its death closes both ends.
constexpr const char* reading_host = R"(
    exec 4>&2 2>/dev/null
    input=$CAMERA_SIM_SCENE.in
    mkfifo "$input"
    {
        {
            "$@" <"$input" 2>&4
            echo "status $?" >&3
        } | {
            exec 5>"$input"
            sh -c 'echo $PPID' >&3
            printf 'CONNECT\nCAPTURE\n' >&5
            while read -r line; do
                echo "$line" >&3
                echo PRIME >&5
            done
        }
    } 3>&1)";

std::ostream& operator<<(std::ostream& out, const Host& host) {
    return out << host.name;
}

class Orphan : public testing::TestWithParam<Host> {};

TEST_P(Orphan, LeavesSoonAfterItsHostDied) {
    constexpr unsigned seed = 19;
    constexpr unsigned most_lines = 40;
    std::mt19937 random(seed);
    for (int round = 0; round < rounds(20, 500); ++round) {
        Plan plan;
        plan.shell = GetParam().script;
        LiveWorker worker(plan);
        std::string line = worker.next();
        while (line.find('|') != std::string::npos) {
            line = worker.next();
        }
        const pid_t host = std::stoi(line);
        for (auto left = random() % most_lines; left > 0; --left) {
            worker.next();
        }
        kill(host, SIGKILL);
        const auto start = host::Clock::now();
        EXPECT_TRUE(worker.await_line("status 0"));
        EXPECT_LE(host::Clock::now() - start, std::chrono::milliseconds(3500) * slowness);
    }
}

const Host hosts[] = {{"OfAHostThatWrites", writing_host}, {"OfAHostThatReads", reading_host}};
INSTANTIATE_TEST_SUITE_P(Each, Orphan, testing::ValuesIn(hosts), testing::PrintToStringParamName());

}  // namespace
