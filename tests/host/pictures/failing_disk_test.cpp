// Any call that fails, once or for ever: nothing is lost, and what is not in its place is named.

#include <cerrno>

#include "tests/host/pictures/afternoon.h"
#include "tests/host/pictures/disk_calls.h"

namespace {

struct Failure {
    int error;
    bool for_ever;
    bool no_exclusive_rename;
};

class FailingDisk : public testing::TestWithParam<Failure> {
  protected:
    ~FailingDisk() override {
        disk_calls::before = {};
        disk_calls::no_exclusive_rename = false;
    }
};

TEST_P(FailingDisk, LosesNothingAtAnyStep) {
    const Failure& failure = GetParam();
    int step = 0;
    for (bool failed = true; failed; ++step) {
        SCOPED_TRACE("step " + std::to_string(step));
        const TemporaryFolder folder(quick_disk());
        const Afternoon afternoon(folder.path());
        disk_calls::no_exclusive_rename = failure.no_exclusive_rename;
        int calls = 0;
        std::string failing;
        disk_calls::before = [&](std::string_view call) {
            const int here = calls++;
            if (here == step || (failure.for_ever && here > step)) {
                failing = call;
                return failure.error;
            }
            return 0;
        };
        afternoon.shoot();
        disk_calls::before = {};
        failed = !failing.empty();
        SCOPED_TRACE(failing);
        if (fs::exists(afternoon.folder() / ".incoming")) {
            afternoon.check_nothing_lost(afternoon.problems);
        }
        // The disk is well again.
        afternoon.check();
        if (HasFailure()) {
            return;
        }
    }
    EXPECT_GT(step, 60);
}

INSTANTIATE_TEST_SUITE_P(Once, FailingDisk,
                         testing::Values(Failure{EIO, false, false}, Failure{ENOSPC, false, false},
                                         Failure{EIO, false, true}));
INSTANTIATE_TEST_SUITE_P(ForEver, FailingDisk,
                         testing::Values(Failure{EIO, true, false}, Failure{EROFS, true, false},
                                         Failure{ENOSPC, true, true}));

}  // namespace
