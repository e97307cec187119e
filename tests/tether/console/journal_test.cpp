#include "tether/console/journal.h"

#include <chrono>
#include <condition_variable>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>
#include <vector>

#include "host/camera/uptime.h"
#include "host/process/mutex.h"
#include "tether/rpc/json.h"

namespace console {
namespace {

using namespace std::chrono_literals;

rpc::Json call(const std::string& line) {
    // The camera's clock shows 2041 s, and the lines' 11 s, of which the first was before the
    // start.
    const std::string text = call_of(line, 1s, 11s, 2041s);
    return text.empty() ? rpc::Json() : rpc::Json::parse(text);
}

TEST(Journal, ALineIsACallOnTheClockOfTheLines) {
    const rpc::Json told =
        call("2040.033343\t0.400161\tmain\tEnumCameraObjects 3\t0x00000000 1 camera");
    EXPECT_EQ(told["method"], "call");
    EXPECT_EQ(told["params"].dump(),
              R"({"atMs":9033.343,"durationMs":400.161,"thread":"main",)"
              R"("call":"EnumCameraObjects 3","result":"0x00000000 1 camera"})");
}

TEST(Journal, ACallbackHasNoDuration) {
    EXPECT_EQ(
        call("2041.000000\t-\tsdk-1\tOnConnected 3\t-")["params"].dump(),
        R"({"atMs":10000.0,"durationMs":null,"thread":"sdk-1","call":"OnConnected 3","result":"-"})");
}

TEST(Journal, WhatIsNoLineOfItIsNotTold) {
    for (const std::string line :
         {"", "a", "1.000000\t-\tmain\tcall", "1.000000\t-\tmain\tcall\tresult\tmore",
          "1\t-\tmain\tcall\tresult", "x.000000\t-\tmain\tcall\tresult",
          "1.00000\t-\tmain\tcall\tresult", "1.0000x0\t-\tmain\tcall\tresult",
          "1.000000\tx\tmain\tcall\tresult"}) {
        EXPECT_TRUE(call(line).is_null()) << line;
    }
}

TEST(Journal, TellsWhatTheCameraWrites) {
    host::Mutex mutex;
    std::condition_variable changed;
    std::vector<std::string> told;
    std::string path;
    {
        Journal journal(host::uptime(), [&](std::string text) {
            const host::MutexLock lock(mutex);
            told.push_back(std::move(text));
            changed.notify_all();
        });
        path = journal.path();
        ASSERT_FALSE(path.empty());
        // As the camera does, and a camera that takes its place.
        for (int worker = 1; worker <= 2; ++worker) {
            const int file = open(path.c_str(), O_WRONLY | O_APPEND | O_NONBLOCK);
            ASSERT_GE(file, 0);
            const std::string line =
                "1.000000\t-\tmain\tInit " + std::to_string(worker) + "\ttrue\nrest";
            EXPECT_EQ(write(file, line.data(), line.size() - 4),
                      static_cast<ssize_t>(line.size() - 4));
            close(file);
            const host::MutexLock lock(mutex);
            while (told.size() < static_cast<std::size_t>(worker)) {
                mutex.wait(changed);
            }
            EXPECT_EQ(rpc::Json::parse(told.back())["params"]["call"],
                      "Init " + std::to_string(worker));
        }
    }
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::path(path).parent_path()));
}

}  // namespace
}  // namespace console
