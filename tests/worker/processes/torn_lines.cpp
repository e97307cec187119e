// Every thread writes at once, and every line comes out whole.

#include <cstdio>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <thread>

#include "tests/worker/processes/live_worker.h"
#include "tests/worker/processes/pace.h"

namespace {

// Longer than what the C library or the kernel would write in one piece.
std::string name_of(char thread, int number) {
    return std::string(9000, thread) + std::to_string(number) + ".JPG";
}

struct Deliveries {
    char thread;
    int landed = 0;
    int downloaded = 0;

    // Whether the line is the next one of this thread.
    bool take(const std::string& line) {
        if (line == "LOG|[SONY] landed " + name_of(thread, landed) && landed == downloaded) {
            ++landed;
            return true;
        }
        if (line == "DOWNLOADED|/dir/" + name_of(thread, downloaded) && landed == downloaded + 1) {
            ++downloaded;
            return true;
        }
        return false;
    }
};

TEST(TornLines, FourThreadsWriteWholeLines) {
    const int deliveries = rounds(2000, 20'000);
    LiveWorker worker({.arguments = {"/dir"}});
    worker.bring_session_up();
    std::thread camera([&worker, deliveries] {
        for (int number = 0; number < deliveries; ++number) {
            worker.tell_camera("deliver \"" + name_of('a', number) + "\" 0xFFFFFFFF");
            worker.tell_camera("second deliver \"" + name_of('b', number) + "\" 0xFFFFFFFF");
        }
    });
    std::thread host([&worker, deliveries] {
        for (int number = 0; number < deliveries; ++number) {
            worker.send("PRIME");
        }
    });
    Deliveries first{'a'};
    Deliveries second{'b'};
    int primes = 0;
    while (first.downloaded + second.downloaded + primes < 3 * deliveries) {
        const std::string line = worker.next();
        if (line == "PRIME_DONE|OK") {
            ++primes;
        } else if (!first.take(line) && !second.take(line)) {
            ADD_FAILURE() << line.substr(0, 100) << " ... " << line.size() << " bytes";
            break;
        }
    }
    camera.join();
    host.join();
    worker.expect_prompt_end([&] { worker.send("QUIT"); });
}

// The file that a line reports as landed or downloaded, as its thread and its number; otherwise
// nothing.
struct Report {
    int thread;
    int number;
};

std::optional<Report> report_in(const std::string& line, const std::string& key) {
    Report report{};
    int length = 0;
    const bool read = line.compare(0, key.size(), key) == 0 &&
                      std::sscanf(line.c_str() + key.size(), "%1d-%d.JPG%n", &report.thread,
                                  &report.number, &length) == 2;
    const bool whole = read && key.size() + static_cast<std::size_t>(length) == line.size();
    return whole && report.thread < 8 ? std::optional(report) : std::nullopt;
}

TEST(TornLines, NoneIsLostOfEightThreadsOfTheSdk) {
    const int files = rounds(4000, 125'000);
    LiveWorker worker({.arguments = {"/dir"}});
    worker.bring_session_up();
    worker.tell_camera("crowd " + std::to_string(files));
    int landed[8] = {};
    int downloaded[8] = {};
    for (int left = 2 * 8 * files; left > 0;) {
        const std::string line = worker.next();
        if (const auto log = report_in(line, "LOG|[SONY] landed ")) {
            ASSERT_EQ(log->number, landed[log->thread]++);
            --left;
        } else if (const auto file = report_in(line, "DOWNLOADED|/dir/")) {
            ASSERT_EQ(file->number, downloaded[file->thread]++);
            ASSERT_EQ(landed[file->thread], downloaded[file->thread]);
            --left;
        } else {
            FAIL() << line;
        }
    }
    worker.expect_prompt_end([&] { worker.send("QUIT"); });
}

}  // namespace
