// The life of a session as the SDK tells it: lines, flags and what is asked of the main thread.

#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "session/sony_worker.h"
#include "tests/worker/unit/queued_commands.h"

namespace {

using Lines = std::vector<std::string>;

template <typename Event>
std::string lines_of(const Event& event) {
    testing::internal::CaptureStdout();
    event();
    return testing::internal::GetCapturedStdout();
}

std::string connected(SonyWorker& worker, std::int32_t version) {
    return lines_of(
        [&] { worker.OnConnected(static_cast<SCRSDK::DeviceConnectionVersioin>(version)); });
}

std::string disconnected(SonyWorker& worker, std::uint32_t code) {
    return lines_of([&] { worker.OnDisconnected(static_cast<sdk::DisconnectReason>(code)); });
}

std::string warned(SonyWorker& worker, std::uint32_t code) {
    return lines_of([&] { worker.OnWarning(static_cast<sdk::WarningCode>(code)); });
}

std::string failed(SonyWorker& worker, std::uint32_t code) {
    return lines_of([&] { worker.OnError(static_cast<sdk::ErrorCode>(code)); });
}

TEST(OnConnected, BringsTheSessionUpAndAsksForItsSettings) {
    main_thread.assume();
    SonyWorker worker;
    worker.camera_name.publish("MODEL-A");
    worker.watchdog_armed = 7;
    worker.closing = true;
    EXPECT_EQ(connected(worker, 3),
              "LOG|[SONY] session up (connection version 3)\nCONNECTED|MODEL-A\n");
    EXPECT_TRUE(worker.connected);
    EXPECT_FALSE(worker.closing);
    EXPECT_EQ(worker.watchdog_armed, 0U);
    EXPECT_EQ(queued_commands(), Lines({"__APPLY_SETTINGS"}));
}

TEST(OnConnected, WritesTheVersionSignedAndTheNameEscaped) {
    main_thread.assume();
    struct Opening {
        std::int32_t version;
        std::string name;
        std::string lines;
    };
    const Opening table[] = {
        {0, "", "LOG|[SONY] session up (connection version 0)\nCONNECTED|\n"},
        {-1, "A|B", "LOG|[SONY] session up (connection version -1)\nCONNECTED|A%7CB\n"},
        {2147483647, "50%\r\n",
         "LOG|[SONY] session up (connection version 2147483647)\nCONNECTED|50%25%0D%0A\n"},
    };
    for (const Opening& row : table) {
        SonyWorker worker;
        worker.camera_name.publish(row.name);
        EXPECT_EQ(connected(worker, row.version), row.lines);
        EXPECT_EQ(queued_commands(), Lines({"__APPLY_SETTINGS"}));
    }
}

TEST(OnDisconnected, ReportsALossAndKeepsTheHandle) {
    main_thread.assume();
    SonyWorker worker;
    worker.device_handle = 4;
    worker.connected = true;
    worker.watchdog_armed = 7;
    EXPECT_EQ(disconnected(worker, 10),
              "LOG|[SONY] camera went away (0x0000000A)\nDISCONNECTED|\n");
    EXPECT_FALSE(worker.connected);
    EXPECT_EQ(worker.watchdog_armed, 0U);
    EXPECT_EQ(worker.device_handle, 4);
    EXPECT_EQ(queued_commands(), Lines());
}

TEST(OnDisconnected, IsSilentWhileTheWorkerItselfIsClosing) {
    SonyWorker worker;
    worker.connected = true;
    worker.closing = true;
    worker.watchdog_armed = 7;
    EXPECT_EQ(disconnected(worker, 10), "");
    EXPECT_FALSE(worker.connected);
    EXPECT_TRUE(worker.closing);
    EXPECT_EQ(worker.watchdog_armed, 0U);
}

TEST(OnWarning, ReportsALossOnceHoweverOftenTheSdkRepeatsIt) {
    main_thread.assume();
    SonyWorker worker;
    worker.device_handle = 4;
    worker.connected = true;
    worker.watchdog_armed = 7;
    EXPECT_EQ(warned(worker, 0x00020002),
              "LOG|[SONY] camera went away (the SDK is trying to reconnect)\nDISCONNECTED|\n");
    EXPECT_EQ(warned(worker, 0x00020002), "");
    EXPECT_FALSE(worker.connected);
    EXPECT_EQ(worker.watchdog_armed, 7U);
    EXPECT_EQ(worker.device_handle, 4);
    EXPECT_EQ(queued_commands(), Lines());
}

// The reconnecting warning is about a loss that the worker has not caused, so it is told even then.
TEST(OnWarning, ReportsALossWhileClosingIsStillSet) {
    SonyWorker worker;
    worker.connected = true;
    worker.closing = true;
    EXPECT_EQ(warned(worker, 0x00020002),
              "LOG|[SONY] camera went away (the SDK is trying to reconnect)\nDISCONNECTED|\n");
    EXPECT_TRUE(worker.closing);
}

TEST(OnWarning, OnlyLogsEveryOtherCode) {
    struct Warning {
        std::uint32_t code;
        std::string line;
    };
    const Warning table[] = {
        {0x0002008C, "LOG|[SONY] the camera is showing a caution on its own screen (0x0002008C)\n"},
        {0, "LOG|[SONY] warning 0x00000000\n"},
        {1, "LOG|[SONY] warning 0x00000001\n"},
        {0x00020001, "LOG|[SONY] warning 0x00020001\n"},
        {0x00020003, "LOG|[SONY] warning 0x00020003\n"},
        {0xFFFFFFFF, "LOG|[SONY] warning 0xFFFFFFFF\n"},
    };
    for (const Warning& row : table) {
        for (const bool up : {false, true}) {
            SonyWorker worker;
            worker.connected = up;
            worker.watchdog_armed = 7;
            EXPECT_EQ(warned(worker, row.code), row.line);
            EXPECT_EQ(worker.connected, up);
            EXPECT_EQ(worker.watchdog_armed, 7U);
        }
    }
}

TEST(OnError, ReportsTheCodeAndStopsTheWatchdogOnly) {
    main_thread.assume();
    struct Error {
        std::uint32_t code;
        std::string lines;
    };
    const Error table[] = {
        {255, "LOG|[SONY] error 0x000000FF\nERROR|Camera reported 0x000000FF\n"},
        {0, "LOG|[SONY] error 0x00000000\nERROR|Camera reported 0x00000000\n"},
        {0xFFFFFFFF, "LOG|[SONY] error 0xFFFFFFFF\nERROR|Camera reported 0xFFFFFFFF\n"},
    };
    for (const Error& row : table) {
        for (const bool up : {false, true}) {
            SonyWorker worker;
            worker.device_handle = 4;
            worker.connected = up;
            worker.closing = up;
            worker.watchdog_armed = 7;
            EXPECT_EQ(failed(worker, row.code), row.lines);
            EXPECT_EQ(worker.watchdog_armed, 0U);
            EXPECT_EQ(worker.connected, up);
            EXPECT_EQ(worker.closing, up);
            EXPECT_EQ(worker.device_handle, 4);
            EXPECT_EQ(queued_commands(), Lines());
        }
    }
}

// Both reports of one loss reach the host; it takes the second as it takes any repeated line.
TEST(Callbacks, OneLossToldTwiceGivesTwoLines) {
    SonyWorker worker;
    worker.connected = true;
    EXPECT_EQ(warned(worker, 0x00020002),
              "LOG|[SONY] camera went away (the SDK is trying to reconnect)\nDISCONNECTED|\n");
    EXPECT_EQ(disconnected(worker, 1), "LOG|[SONY] camera went away (0x00000001)\nDISCONNECTED|\n");
}

}  // namespace
