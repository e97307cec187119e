// The host to begin with does what it says.
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <stdlib.h>

#include "tests/host/child.h"

namespace {

namespace fs = std::filesystem;

class Example : public testing::Test {
  protected:
    Example() {
        char pattern[] = "/tmp/example-test-XXXXXX";
        folder_ = fs::canonical(mkdtemp(pattern));
        fs::create_directory(folder_ / "own");
        std::ofstream(folder_ / "own/a.jpg") << "a picture";
    }
    ~Example() override {
        fs::remove_all(folder_);
    }

    // What it prints on both outputs, and its exit status at the end.
    std::string take_a_picture(const std::string& scene) {
        std::ofstream(folder_ / "scene") << "timing instant\n" << scene << "\n";
        const auto host = start(
            {"/bin/sh",
             {"-c", "exec \"$@\" 2>&1", "sh", HOST_EXAMPLE, WORKER, folder_},
             {{"CAMERA_SIM_SCENE", folder_ / "scene"}, {"CAMERA_SIM_PICTURES", folder_ / "own"}},
             {}});
        std::string output;
        while (const auto line = host->next_line(host::after(patience))) {
            output += line->text + "\n";
        }
        const auto exit = host->await_exit(host::after(patience));
        return output + (exit ? describe(*exit) : "still running");
    }

    fs::path folder_;
};

constexpr const char* announcement = "camera-sim: simulated SDK, no real camera is driven\n";

TEST_F(Example, PrintsWhereThePictureIs) {
    EXPECT_EQ(take_a_picture("camera \"MODEL-A\" over USB"),
              announcement + (folder_ / "DSC00001.JPG").string() + "\nstatus 0");
}

TEST_F(Example, SaysWhatIsWrong) {
    EXPECT_EQ(take_a_picture("no camera"),
              announcement + std::string("Camera not detected\nstatus 1"));
}

TEST_F(Example, SaysThatTheWorkerHasEnded) {
    // The simulated SDK refuses the scene.
    const std::string output = take_a_picture("nonsense");
    EXPECT_TRUE(output.ends_with("\nthe worker has ended\nstatus 1")) << output;
}

}  // namespace
