// A test of whoever drives a virtual camera, with pictures to shoot.
#pragma once

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#include "host/process/clock.h"
#include "tests/camera_folder.h"

namespace fs = std::filesystem;

class VirtualCameraTest : public testing::Test {
  protected:
    VirtualCameraTest() {
        write("scene", "timing instant\ncamera \"MODEL-A\" over USB, card in\n");
        // Drawing what the virtual camera shoots would only take time.
        write("own/a.jpg", jpeg("first picture"));
        write("own/b.jpg", jpeg("the second one"));
    }

    void write(const std::string& name, const std::string& text) const {
        files_.write(name, text);
    }

    std::string read(const std::string& name) const {
        return files_.read(name);
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
        ASSERT_EQ(files_.tell(line), "") << line;
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

    CameraFolder files_;
    const fs::path folder_ = files_.path();
};
