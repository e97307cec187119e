// Every thread writes at once, and every line comes out whole.

#include <gtest/gtest.h>
#include <string>
#include <thread>

#include "tests/processes/live_worker.h"
#include "tests/processes/pace.h"

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

}  // namespace
