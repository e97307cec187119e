// The host to begin with does what it says.
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
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
        std::ofstream(folder_ / "own/a.jpg")
            << std::string("\xFF\xD8\xFF\xC0\x00\x02\xFF\xDA\x00\x02", 10) << "a picture"
            << "\xFF\xD9";
    }
    ~Example() override {
        fs::remove_all(folder_);
    }

    // What it prints, on standard output first, and its exit status at the end.
    std::string take_a_picture(const std::string& scene) {
        std::ofstream(folder_ / "scene") << "timing instant\n" << scene << "\n";
        const auto host = start(
            {HOST_EXAMPLE,
             {worker_, folder_},
             {{"CAMERA_SIM_SCENE", folder_ / "scene"}, {"CAMERA_SIM_PICTURES", folder_ / "own"}},
             folder_ / "errors"});
        std::string output;
        while (const auto line = host->next_line(host::after(patience))) {
            output += line->text + "\n";
        }
        const auto exit = host->await_exit(host::after(patience));
        std::ifstream errors(folder_ / "errors");
        output.append(std::istreambuf_iterator<char>(errors), {});
        return output + (exit ? describe(*exit) : "still running");
    }

    fs::path folder_;
    std::string worker_ = WORKER;
};

TEST_F(Example, PrintsWhereThePictureIs) {
    EXPECT_EQ(take_a_picture("camera \"MODEL-A\" over USB"),
              (folder_ / "DSC00001.JPG").string() + "\nstatus 0");
}

TEST_F(Example, SaysWhatIsWrongWithAShot) {
    EXPECT_EQ(take_a_picture("every file truncated"),
              (folder_ / "DSC00001.JPG").string() +
                  "\nA picture is damaged: " + (folder_ / "DSC00001.JPG").string() +
                  " (it ends before its picture does)\nstatus 1");
}

TEST_F(Example, SaysWhyThereIsNoPicture) {
    std::ofstream(folder_ / "worker") << "no program";
    worker_ = folder_ / "worker";
    const std::string output = take_a_picture("no camera");
    EXPECT_NE(output.find((folder_ / "worker").string()), std::string::npos) << output;
    EXPECT_TRUE(output.ends_with("\nstatus 1")) << output;
}

}  // namespace
