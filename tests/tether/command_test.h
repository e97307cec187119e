// A command of tether against the worker and the virtual camera.
#pragma once

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <stdlib.h>
#include <string>
#include <utility>
#include <vector>

#include "simulator/control/client.h"
#include "tests/host/child.h"
#include "tests/sanitized.h"

namespace fs = std::filesystem;

class CommandTest : public testing::Test {
  protected:
    CommandTest() {
        char pattern[] = "/tmp/tether-test-XXXXXX";
        folder_ = fs::canonical(mkdtemp(pattern));
        write("scene", "timing instant\ncamera \"MODEL-A\" over USB, card in\n");
        // Drawing what the virtual camera shoots would only take time.
        write("own/a.jpg", jpeg("first picture"));
        write("own/b.jpg", jpeg("the second one"));
    }
    ~CommandTest() override {
        tether_.reset();
        fs::remove_all(folder_);
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

    void start_tether(std::vector<std::string> arguments) {
        start_command({}, std::move(arguments));
    }

    // With what every test of a command on the virtual camera needs.
    void start_command(const std::string& command, std::vector<std::string> arguments) {
        output_.clear();
        std::vector<std::string> usual{"--folder",        folder_ / "shots", "--scene",
                                       folder_ / "scene", "--pictures",      folder_ / "own"};
        if (!command.empty()) {
            usual.insert(usual.begin(), command);
        }
        arguments.insert(arguments.begin(), usual.begin(), usual.end());
        tether_ = start({TETHER_COMMAND,
                         arguments,
                         {{"CAMERA_SIM_CONTROL", folder_ / "control"},
                          {"CAMERA_SIM_JOURNAL", folder_ / "journal"}},
                         folder_ / "stderr"});
    }

    // Reads on to a line that holds the text.
    void read_to(const std::string& text) {
        while (const auto line = tether_->next_line(host::after(patience))) {
            output_ += line->text + "\n";
            if (line->text.find(text) != std::string::npos) {
                return;
            }
        }
        ADD_FAILURE() << "\"" << text << "\" did not come:\n" << output_ << read("stderr");
    }

    std::string status() {
        while (const auto line = tether_->next_line(host::after(patience))) {
            output_ += line->text + "\n";
        }
        const auto exit = tether_->await_exit(host::after(patience));
        return exit ? describe(*exit) : "still running";
    }

    void tell_camera(const std::string& line) {
        auto control = camera_sim::ControlClient::connect(folder_ / "control");
        ASSERT_TRUE(control);
        const auto reply = control->ask(line);
        ASSERT_TRUE(reply && reply->ok) << line << ": " << (reply ? reply->error : "no answer");
    }

    static void expect_in_order(const std::string& text, const std::vector<std::string>& parts) {
        std::size_t at = 0;
        for (const std::string& part : parts) {
            const std::size_t found = text.find(part, at);
            EXPECT_NE(found, std::string::npos) << "\"" << part << "\" does not follow in\n"
                                                << text;
            at = found == std::string::npos ? at : found + part.size();
        }
    }

    // A program of this text, which is a shell script.
    std::string script(const std::string& name, const std::string& text) {
        write(name, "#!/bin/sh\n" + text);
        fs::permissions(folder_ / name, fs::perms::owner_all);
        return folder_ / name;
    }

    bool printed(const std::string& text) {
        return output_.find(text) != std::string::npos;
    }

    fs::path folder_;
    Child tether_;
    std::string output_;
};
