// A folder with all that a virtual camera needs, for tests of whoever drives it.
#pragma once

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <stdlib.h>
#include <string>
#include <system_error>

#include "host/process/clock.h"
#include "simulator/control/client.h"

namespace fs = std::filesystem;

class VirtualCameraTest : public testing::Test {
  protected:
    VirtualCameraTest() {
        char pattern[] = "/tmp/camera-test-XXXXXX";
        folder_ = fs::canonical(mkdtemp(pattern));
        write("scene", "timing instant\ncamera \"MODEL-A\" over USB, card in\n");
        // Drawing what the virtual camera shoots would only take time.
        write("own/a.jpg", jpeg("first picture"));
        write("own/b.jpg", jpeg("the second one"));
    }
    // What a test that failed has left running may be at work in it still.
    ~VirtualCameraTest() override {
        std::error_code ignored;
        fs::remove_all(folder_, ignored);
    }

    void write(const std::string& name, const std::string& text) {
        fs::create_directories((folder_ / name).parent_path());
        std::ofstream(folder_ / name) << text;
    }

    std::string read(const std::string& name) {
        std::ifstream stream(folder_ / name);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    // A whole JPEG with these bytes in place of a picture's.
    static std::string jpeg(const std::string& bytes) {
        return std::string("\xFF\xD8\xFF\xC0\x00\x02\xFF\xDA\x00\x02", 10) + bytes + "\xFF\xD9";
    }

    // A program of this text, which is a shell script.
    std::string script(const std::string& name, const std::string& text) {
        write(name, "#!/bin/sh\n" + text);
        fs::permissions(folder_ / name, fs::perms::owner_all);
        return folder_ / name;
    }

    void tell_camera(const std::string& line) {
        auto control = camera_sim::ControlClient::connect(folder_ / "control");
        ASSERT_TRUE(control);
        const auto reply = control->ask(line);
        ASSERT_TRUE(reply && reply->ok) << line << ": " << (reply ? reply->error : "no answer");
    }

    // Waits until the camera's state has this line.
    void await_camera(const std::string& line) {
        auto control = camera_sim::ControlClient::connect(folder_ / "control");
        ASSERT_TRUE(control);
        const host::TimePoint deadline = host::after(std::chrono::seconds(60));
        for (;;) {
            const auto reply = control->ask("state");
            ASSERT_TRUE(reply && reply->ok) << (reply ? reply->error : "no answer");
            if (std::count(reply->lines.begin(), reply->lines.end(), line) > 0) {
                return;
            }
            ASSERT_LT(host::Clock::now(), deadline) << line << " did not come";
        }
    }

    fs::path folder_;
};
