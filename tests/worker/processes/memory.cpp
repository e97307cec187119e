// What a worker that has run for long holds.

#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

#include "tests/worker/processes/live_worker.h"
#include "tests/worker/processes/pace.h"

namespace {

// The resident memory of a process, in bytes; 0 where the system does not tell.
long memory_of(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/statm");
    long program = 0;
    long resident = 0;
    file >> program >> resident;
    return resident * sysconf(_SC_PAGESIZE);
}

// Commands of the kinds that take no time, on a session that is up, with the check that a card
// which comes and goes brings.
void give_commands(LiveWorker& worker, int number) {
    const std::string commands =
        "foo|bar\nCONNECT\nSET_DOWNLOAD_DIR|/tmp/pictures\nSET_SAVE_DEST|card\n__FILETYPE_CHECK\n"
        "__CARD_CHECK\n__APPLY_SETTINGS\nSET_SAVE_DEST|disk\nPUMP_IDLE\nPRIME\n";
    for (int given = 0; given < number; given += 10) {
        worker.send_bytes(commands);
        ASSERT_TRUE(worker.await_line("PRIME_DONE|OK"));
    }
}

TEST(Memory, DoesNotGrowWithTheCommands) {
    if (sanitized) {
        GTEST_SKIP() << "a sanitizer keeps what was given back";
    }
    constexpr long most_growth = 1 << 20;
    Plan plan;
    plan.environment = {{"CAMERA_SIM_JOURNAL", ""}};
    LiveWorker worker(plan);
    worker.bring_session_up();
    give_commands(worker, 5000);
    const long before = memory_of(worker.process().process());
    if (before == 0) {
        GTEST_SKIP() << "this system does not tell how much memory a process has";
    }
    give_commands(worker, rounds(50'000, 1'000'000));
    EXPECT_LE(memory_of(worker.process().process()) - before, most_growth);
    worker.expect_prompt_end([&] { worker.send("QUIT"); });
}

}  // namespace
