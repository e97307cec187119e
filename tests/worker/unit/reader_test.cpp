// The reader at the end of the process. What it makes of bytes is shown by the framing tests.

#include "program/reader.h"

#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

#include "threads/command_queue.h"
#include "threads/main_thread.h"

namespace {

// In a process of its own: the end of the commands is for good, and so is another standard input.
TEST(Reader, LeavesStandardInputAloneOnceCommandsAreClosed) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            main_thread.assume();
            char lines[] = "CAPTURE\nPRIME\nQUIT\n";
            stdin = fmemopen(lines, sizeof lines - 1, "r");
            close_commands();
            reader_thread();
            char next[16] = "";
            const char* const read = std::fgets(next, sizeof next, stdin);
            std::_Exit(read != nullptr && std::string(next) == "PRIME\n" ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

}  // namespace
