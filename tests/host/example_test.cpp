// The host to begin with does what it says.
#include <gtest/gtest.h>
#include <string>

#include "tests/host/child.h"
#include "tests/host/virtual_camera_test.h"

namespace {

class Example : public VirtualCameraTest {
  protected:
    // What it prints, on standard output first, and its exit status at the end.
    std::string take_a_picture(const std::string& scene) {
        files_.write_scene(scene);
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
        return output + read("errors") + (exit ? describe(*exit) : "still running");
    }

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
    write("worker", "no program");
    worker_ = folder_ / "worker";
    const std::string output = take_a_picture("no camera");
    EXPECT_NE(output.find((folder_ / "worker").string()), std::string::npos) << output;
    EXPECT_TRUE(output.ends_with("\nstatus 1")) << output;
}

}  // namespace
