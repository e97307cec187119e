// Download folders that take no files, and one with an odd name.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>
#include <vector>

#include "host/process/fields.h"
#include "tests/temporary_folder.h"
#include "tests/worker/processes/live_worker.h"
#include "tests/worker/processes/pace.h"

namespace {

namespace fs = std::filesystem;

class Folders : public testing::Test {
  protected:
    Folders() {
        fs::create_directory(top_ / "pictures");
        std::ofstream(top_ / "pictures/one.jpg") << "\xFF\xD8\xFF\xD9";
    }

    // The lines that one shot into the folder brings.
    std::vector<std::string> shoot_into(const std::string& folder, bool takes_files) {
        Plan plan;
        plan.arguments = {folder, "", "disk"};
        plan.environment = {{"CAMERA_SIM_PICTURES", top_ / "pictures"}};
        LiveWorker worker(plan);
        worker.bring_session_up();
        worker.send("CAPTURE");
        EXPECT_TRUE(worker.await_call("SendCommand 0 0"));
        worker.tell_camera("wait");
        worker.send("PRIME");
        std::vector<std::string> lines{worker.next()};
        while (lines.back() != "PRIME_DONE|OK" && lines.back().front() != '(') {
            lines.push_back(worker.next());
        }
        worker.expect_prompt_end([&] { worker.send("QUIT"); });
        EXPECT_EQ(worker.take_complaints().find("was not written") == std::string::npos,
                  takes_files);
        return lines;
    }

    void expect_no_file_from(const std::string& folder) {
        const std::vector<std::string> lines = shoot_into(folder, false);
        EXPECT_TRUE(std::count(lines.begin(), lines.end(), "REMOTE_CAPTURED|OK"));
        for (const std::string& line : lines) {
            EXPECT_NE(line.rfind("DOWNLOADED|", 0), 0U) << line;
        }
    }

    const TemporaryFolder made_;
    const fs::path top_ = made_.path();
};

TEST_F(Folders, AMissingOneCostsTheShotNotTheWorker) {
    expect_no_file_from(top_ / "missing");
}

TEST_F(Folders, AFileInItsPlaceCostsTheShotNotTheWorker) {
    expect_no_file_from(top_ / "pictures/one.jpg");
}

TEST_F(Folders, OneThatMayNotBeWrittenCostsTheShotNotTheWorker) {
    // Root may write everywhere but there.
    fs::path folder = "/proc";
    if (geteuid() != 0) {
        folder = top_ / "closed";
        fs::create_directory(folder);
        fs::permissions(folder, fs::perms::owner_read | fs::perms::owner_exec);
    }
    expect_no_file_from(folder);
}

TEST_F(Folders, AnyByteMayBeInTheName) {
    std::string name;
    for (int byte = 1; byte < 256; ++byte) {
        if (byte != '/') {
            name += static_cast<char>(byte);
        }
    }
    const fs::path folder = top_ / name;
    fs::create_directory(folder);
    const std::vector<std::string> lines = shoot_into(folder, true);
    EXPECT_TRUE(std::count(lines.begin(), lines.end(),
                           "DOWNLOADED|" + host::escape_field(folder.string() + "/DSC00001.JPG")));
    EXPECT_TRUE(fs::exists(folder / "DSC00001.JPG"));
}

}  // namespace
