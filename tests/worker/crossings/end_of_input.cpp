// The end of the input must wake a main thread that is just falling asleep: nothing else would, and
// a worker whose host is gone would stay for ever.

#include <cstdlib>
#include <gtest/gtest.h>
#include <thread>

#include "tests/worker/crossings/event.h"
#include "tests/worker/crossings/points.h"
#include "threads/command_queue.h"

namespace {

// The reader comes after the main thread's look at the queue and before its sleep, and goes as far
// as it can get there: to the queue's lock, or through.
[[noreturn]] void end_the_input_while_the_main_thread_falls_asleep() {
    main_thread.assume();
    Event looked;
    Event as_far_as_it_can_get;
    Event woken;
    std::thread([&] {
        looked.await();
        {
            const Visits visits([&](Point point) {
                if (point == Point::lock) {
                    as_far_as_it_can_get.happen();
                }
            });
            end_input();
        }
        as_far_as_it_can_get.happen();
        std::_Exit(woken.await() ? 0 : 1);
    }).detach();

    const Visits visits([&](Point point) {
        if (point == Point::wait) {
            looked.happen();
            as_far_as_it_can_get.await();
        }
    });
    if (!next_command()) {
        woken.happen();
    }
    for (;;) {
        std::this_thread::sleep_for(patience);
    }
}

TEST(EndOfInput, IsNotLostBetweenTheLookAndTheSleep) {
    EXPECT_EXIT(end_the_input_while_the_main_thread_falls_asleep(), testing::ExitedWithCode(0), "");
}

}  // namespace
