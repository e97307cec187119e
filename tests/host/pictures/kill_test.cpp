// Killed before any system call that changes the disk: the next start brings everything to one
// place and tells it under one id.

#include <cstdlib>

#include "tests/host/pictures/afternoon.h"
#include "tests/host/pictures/disk_calls.h"

namespace {

class Killed : public testing::TestWithParam<bool> {
  protected:
    Killed() {
        disk_calls::no_exclusive_rename = GetParam();
    }
    ~Killed() override {
        disk_calls::no_exclusive_rename = false;
    }
};

TEST_P(Killed, AtAnyStepOfAnAfternoonNothingIsLostAndNothingIsTwice) {
    int step = 0;
    for (bool cut = true; cut; ++step) {
        SCOPED_TRACE("step " + std::to_string(step));
        const TemporaryFolder folder(quick_disk());
        const Afternoon afternoon(folder.path());
        cut = cut_at(step, [&] { afternoon.shoot(); });
        afternoon.check();
        if (HasFailure()) {
            return;
        }
    }
    EXPECT_GT(step, 100);
}

TEST_P(Killed, AtAnyStepOfTheStartAfterAKillNothingIsLostAndNothingIsTwice) {
    // Every pair of kills takes minutes.
    const int stride = std::getenv("CAMERA_WORKER_LONG") != nullptr ? 1 : 5;
    int pairs = 0;
    bool cut = true;
    for (int step = 0; cut; step += 1) {
        bool cut_again = true;
        for (int again = step % stride; cut_again; again += stride) {
            SCOPED_TRACE("steps " + std::to_string(step) + ", " + std::to_string(again));
            const TemporaryFolder folder(quick_disk());
            const Afternoon afternoon(folder.path());
            cut = cut_at(step, [&] { afternoon.shoot(); });
            cut_again = cut_at(again, [&] { afternoon.start(); });
            afternoon.check();
            ++pairs;
            if (HasFailure()) {
                return;
            }
        }
    }
    EXPECT_GT(pairs, 300);
}

INSTANTIATE_TEST_SUITE_P(ByRename, Killed, testing::Values(false));
INSTANTIATE_TEST_SUITE_P(ByReservation, Killed, testing::Values(true));

}  // namespace
