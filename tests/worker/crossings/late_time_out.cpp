// A watchdog that found an attempt late may be held up at any moment. What it does afterwards must
// meet that attempt and no other.

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include "program/dispatch.h"
#include "session/sony_worker.h"
#include "tests/worker/crossings/event.h"
#include "tests/worker/crossings/output_file.h"
#include "tests/worker/crossings/points.h"
#include "threads/command_queue.h"

namespace {

struct Moment {
    const char* name;
    Point point;
    int before;  // how many such points the watchdog passes first
};

std::ostream& operator<<(std::ostream& out, const Moment& moment) {
    return out << moment.name;
}

const Moment judging{"Judging", Point::clock, 0};
const Moment reporting[] = {
    {"BeforeTheLog", Point::lock, 0},   {"AfterTheLog", Point::unlocked, 0},
    {"BeforeTheError", Point::lock, 1}, {"AfterTheError", Point::unlocked, 1},
    {"BeforeThePost", Point::lock, 2},  {"AfterThePost", Point::unlocked, 2},
};

// A worker with one attempt that its watchdog is about to find late, its clock being an hour ahead
// then. Never destroyed: the watchdog never ends.
struct Stage {
    explicit Stage(Moment moment) : held_up_at(moment), points_left(moment.before) {}

    const Moment held_up_at;
    int points_left;  // the watchdog only
    bool judged = false;

    Event held_up;
    Event goes_on;
    Event round_over;
    OutputFile output;
    SonyWorker worker;

    void pass(Point point) {
        if (point == Point::sleep && judged) {
            round_over.happen();
        }
        if (point == held_up_at.point && points_left-- == 0) {
            held_up.happen();
            goes_on.await();
        }
        if (point == Point::clock && !judged) {
            judged = true;
            put_clock_forward(std::chrono::hours(1));
        }
    }

    void watch() {
        const Visits visits([this](Point point) { pass(point); });
        worker.connect_watchdog_thread();
    }
};

bool is_report(const std::string& line) {
    return line == "LOG|[SONY] no answer to Connect in 20 s — giving the handle back" ||
           line == "ERROR|Could not open the camera (timeout) — replug the camera";
}

class LateTimeOut : public testing::TestWithParam<Moment> {
  protected:
    LateTimeOut() : stage_(*new Stage(GetParam())) {
        main_thread.assume();
        stage_.worker.init();
        stage_.worker.connect();
        std::thread(&Stage::watch, &stage_).detach();
        came_ = stage_.held_up.await();
    }

    ~LateTimeOut() override {
        main_thread.assume();
        stage_.worker.disconnect(true);
        sdk::release();
    }

    // Lets the watchdog finish its round and the main thread do what it was asked for.
    void go_on() REQUIRES(main_thread) {
        stage_.goes_on.happen();
        came_ = stage_.round_over.await() && came_;
        post_command("(the last one)");
        for (auto line = next_command(); line != "(the last one)"; line = next_command()) {
            dispatch(stage_.worker, *line);
        }
        lines_ = stage_.output.take();
        EXPECT_TRUE(came_) << "the watchdog did not pass here";
    }

    auto reports() const {
        return std::count_if(lines_.begin(), lines_.end(), is_report);
    }

    Stage& stage_;
    bool came_ = false;
    std::vector<std::string> lines_;
};

TEST_P(LateTimeOut, LeavesANewerAttemptAlone) {
    main_thread.assume();
    SonyWorker& worker = stage_.worker;
    worker.disconnect(true);
    worker.connect();
    const sdk::Handle handle = worker.device_handle;
    go_on();
    EXPECT_NE(handle, 0);
    EXPECT_EQ(worker.device_handle, handle);
    EXPECT_EQ(worker.watchdog_armed, 2U);
    EXPECT_EQ(reports(), GetParam().point == Point::clock ? 0 : 2);
}

TEST_P(LateTimeOut, LeavesASessionThatCameUpAlone) {
    main_thread.assume();
    SonyWorker& worker = stage_.worker;
    std::thread([&] { worker.OnConnected(SCRSDK::DeviceConnectionVersioin(3)); }).join();
    go_on();
    EXPECT_NE(worker.device_handle, 0);
    EXPECT_TRUE(worker.connected);
    EXPECT_FALSE(worker.closing);
    EXPECT_EQ(reports(), GetParam().point == Point::clock ? 0 : 2);
}

TEST_P(LateTimeOut, FindsNothingLeftOfAnAttemptThatWasGivenUp) {
    main_thread.assume();
    SonyWorker& worker = stage_.worker;
    worker.disconnect(true);
    go_on();
    EXPECT_EQ(worker.device_handle, 0);
    EXPECT_EQ(worker.watchdog_armed, 0U);
    EXPECT_EQ(reports(), GetParam().point == Point::clock ? 0 : 2);
}

TEST_P(LateTimeOut, GivesTheHandleBackWhenNothingElseHappens) {
    main_thread.assume();
    SonyWorker& worker = stage_.worker;
    go_on();
    EXPECT_EQ(worker.device_handle, 0);
    EXPECT_TRUE(worker.closing);
    EXPECT_EQ(reports(), 2);
}

const auto name_of = [](const testing::TestParamInfo<Moment>& info) {
    return std::string(info.param.name);
};
INSTANTIATE_TEST_SUITE_P(HeldUp, LateTimeOut, testing::Values(judging), name_of);
INSTANTIATE_TEST_SUITE_P(HeldUpWhileReporting, LateTimeOut, testing::ValuesIn(reporting), name_of);

}  // namespace
