// The worker's state before anything has happened, and what it asks of no camera then.

#include "session/sony_worker.h"

#include <gtest/gtest.h>

namespace {

TEST(SonyWorker, BeginsWithNothingOpenAndNothingKnown) {
    main_thread.assume();
    const SonyWorker worker;
    EXPECT_EQ(worker.download_dir.get(), "");
    EXPECT_EQ(worker.camera_name.get(), "");
    EXPECT_EQ(worker.save_destination, "both");
    EXPECT_EQ(worker.device_handle, 0);
    EXPECT_FALSE(worker.card_fallback);
    EXPECT_EQ(worker.reported_file_type, 0xFFFFFFFFFFFFFFFFU);
    EXPECT_EQ(worker.card_present, 0xFFFFFFFFU);
    EXPECT_EQ(worker.last_enum_error, 0U);
    EXPECT_FALSE(worker.connected);
    EXPECT_FALSE(worker.closing);
    EXPECT_EQ(worker.watchdog_armed, 0U);
    EXPECT_EQ(worker.connect_deadline_ms, 0);
    EXPECT_EQ(worker.connect_attempt, 0U);
}

// The SDK of this test was never started and ends the process of whoever calls it.
TEST(SonyWorker, KeepsADestinationForTheNextSession) {
    main_thread.assume();
    SonyWorker worker;
    testing::internal::CaptureStdout();
    worker.set_save_destination("card");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(worker.save_destination, "card");
}

TEST(SonyWorker, ChecksNoFileTypeWithoutASession) {
    main_thread.assume();
    SonyWorker worker;
    testing::internal::CaptureStdout();
    worker.file_type_check();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(worker.reported_file_type, 0xFFFFFFFFFFFFFFFFU);
}

}  // namespace
