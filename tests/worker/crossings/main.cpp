// A test that ends the input or the process does so in a process of its own, which runs the program
// again from its start.

#include <cstdlib>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    setenv("TSAN_OPTIONS", "atexit_sleep_ms=0", 0);
    setenv("CAMERA_SIM_SCENE", UNANSWERED_SCENE, 1);
    return RUN_ALL_TESTS();
}
