// Many lines at once: none is lost, none overtakes another.

#include <gtest/gtest.h>
#include <string>

#include "tests/processes/live_worker.h"
#include "tests/processes/pace.h"

namespace {

TEST(Bursts, AMillionLinesAtOnceAreAnsweredInOrder) {
    const int lines = sanitized ? 100'000 : 1'000'000;
    std::string bytes;
    for (int line = 1; line <= lines; ++line) {
        bytes += "line " + std::to_string(line) + "\n";
    }
    LiveWorker worker;
    worker.expect_opening();
    EXPECT_TRUE(worker.send_bytes(bytes));
    worker.close_input();
    for (int line = 1; line <= lines; ++line) {
        ASSERT_EQ(worker.next(), "ERROR|Unknown command: line " + std::to_string(line));
    }
    EXPECT_EQ(worker.next(), "(end of output)");
    EXPECT_TRUE(worker.exit().clean());
}

}  // namespace
