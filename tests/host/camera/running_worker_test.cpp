// What comes out of a worker's two outputs.
#include "host/camera/running_worker.h"

#include <gtest/gtest.h>

namespace host {
namespace {

constexpr int patience = 60'000;  // in milliseconds; only a failing test waits for it

std::unique_ptr<RunningWorker> run_script(const std::string& text) {
    // The shell reads its script, and then what is said to it, from its input.
    CameraOptions options;
    options.worker = "/bin/sh";
    std::string why;
    auto worker = RunningWorker::start(options, {"run", "", -1}, std::make_shared<Inbox>(), why);
    EXPECT_NE(worker, nullptr) << why;
    worker->started();
    EXPECT_TRUE(worker->say(text));
    return worker;
}

// Until there is something to be read from the output, or from standard error.
void await(const RunningWorker& worker, bool error) {
    std::vector<pollfd> sources;
    worker.add_to(sources);
    ASSERT_EQ(sources.size(), 2u);
    ASSERT_EQ(poll(&sources[error ? 1 : 0], 1, patience), 1);
}

// The worker writes both while standard error is being listened to.
TEST(RunningWorkerTest, WhatItSaidOnStandardErrorComesBeforeTheLineThatFollowedIt) {
    const auto worker = run_script("echo begun >&2");
    await(*worker, true);
    std::vector<std::string> heard;
    Ear ear;
    ear.line = [&](std::string_view line) {
        heard.emplace_back(line);
    };
    ear.too_long = [] {
    };
    ear.error = [&](std::string_view line) {
        heard.emplace_back(line);
        if (line == "begun") {
            EXPECT_TRUE(worker->say("echo announcement >&2; echo ready"));
            await(*worker, false);
        }
    };
    while (heard.size() < 3) {
        worker->read(Time{}, ear);
    }
    EXPECT_EQ(heard, (std::vector<std::string>{"begun", "announcement", "ready"}));
}

}  // namespace
}  // namespace host
