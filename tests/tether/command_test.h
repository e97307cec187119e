// A command of tether against the worker and the virtual camera.
#pragma once

#include <gtest/gtest.h>
#include <signal.h>
#include <string>
#include <utility>
#include <vector>

#include "tests/host/child.h"
#include "tests/host/virtual_camera_test.h"
#include "tests/sanitized.h"

class CommandTest : public VirtualCameraTest {
  protected:
    CommandTest() {
        signal(SIGHUP, SIG_DFL);  // these tests may run under nohup; what they start must not
    }
    ~CommandTest() override {
        tether_.reset();
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
        std::string program = TETHER_COMMAND;
        if (!ignored_.empty()) {
            arguments.insert(arguments.begin(),
                             {"-c", "trap '' " + ignored_ + " && exec \"$0\" \"$@\"", program});
            program = "/bin/sh";
        }
        tether_ = start({program,
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

    // What tether says of a call that it refuses, and all that it says.
    std::string refusal_of(const std::vector<std::string>& arguments) {
        fs::remove(folder_ / "errors");
        output_.clear();
        tether_ = start({TETHER_COMMAND, arguments, {}, folder_ / "errors"});
        EXPECT_EQ(status(), "status 2") << arguments.front();
        EXPECT_EQ(output_, "") << arguments.front();
        return read("errors");
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

    bool printed(const std::string& text) {
        return output_.find(text) != std::string::npos;
    }

    std::string ignored_;  // signals that it is told to ignore, such as "HUP" under nohup
    Child tether_;
    std::string output_;
};
