// Exits under fire: lines, signals and callbacks pour in while the worker leaves. Its status is 0
// every time.

#include <gtest/gtest.h>
#include <ostream>
#include <signal.h>
#include <string>
#include <thread>

#include "tests/worker/processes/live_worker.h"
#include "tests/worker/processes/pace.h"

namespace {

struct Fire {
    const char* name;
    bool lines;
    bool signals;
    bool callbacks;
};

std::ostream& operator<<(std::ostream& out, const Fire& fire) {
    return out << fire.name;
}

constexpr const char* storm =
    "during Release storm 200 0x0708 0x0106\n"
    "during Release deliver \"a.JPG\" 0xFFFFFFFF\n"
    "during Release second warning 1\n"
    "during Release error 1\n"
    "during Release second disconnected 1\n"
    "during Release connected 3\n";

void pour_lines(host::WorkerProcess& worker) {
    std::string bytes;
    for (int line = 0; line < 500; ++line) {
        bytes += "PRIME\nfoo|bar\n" + std::string(static_cast<std::size_t>(line), 'x') + "\n";
    }
    while (worker.send_bytes(bytes)) {}
}

void pour_signals(host::WorkerProcess& worker) {
    const int numbers[] = {SIGHUP, SIGINT, SIGTERM};
    for (int sent = 0; worker.signal(numbers[sent % 3]); ++sent) {}
}

// The lines that come out are left alone: which of them are written in time is open.
host::Exit leave_under(const Fire& fire) {
    LiveWorker worker({fire.callbacks ? storm : ""});
    if (fire.callbacks) {
        worker.bring_session_up();
    } else {
        worker.await_line("READY|OK");
    }
    std::thread signalling;
    if (fire.signals) {
        signalling = std::thread([&worker] { pour_signals(worker.process()); });
    }
    worker.send("QUIT");
    if (fire.lines) {
        pour_lines(worker.process());
    }
    const host::Exit exit = worker.exit();
    if (signalling.joinable()) {
        signalling.join();
    }
    return exit;
}

class ExitUnderFire : public testing::TestWithParam<Fire> {};

TEST_P(ExitUnderFire, AlwaysHasStatus0) {
    const int exits = rounds(75, 2500);
    int clean = 0;
    for (int round = 0; round < exits; ++round) {
        const host::Exit exit = leave_under(GetParam());
        EXPECT_EQ(describe(exit), "status 0");
        clean += exit.clean() ? 1 : 0;
    }
    EXPECT_EQ(clean, exits);
}

const Fire fires[] = {
    {"Lines", true, false, false},
    {"Signals", false, true, false},
    {"Callbacks", false, false, true},
    {"Everything", true, true, true},
};
INSTANTIATE_TEST_SUITE_P(Of, ExitUnderFire, testing::ValuesIn(fires),
                         testing::PrintToStringParamName());

}  // namespace
