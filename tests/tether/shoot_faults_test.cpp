// Every fault of the virtual camera, one at a time: what a shoot loses by it, and what it says.
#include "tests/tether/command_test.h"

namespace {

struct Fault {
    const char* name;
    const char* scene;
    std::vector<std::string> options;
    const char* status;
    std::vector<std::string> said;  // in this order
};

void PrintTo(const Fault& fault, std::ostream* stream) {
    *stream << fault.scene;
}

class ShootFaultTest : public CommandTest, public testing::WithParamInterface<Fault> {};

TEST_P(ShootFaultTest, IsSaidAsItIs) {
    const Fault& fault = GetParam();
    write("scene", "timing instant\ncamera \"MODEL-A\" over USB, card in\n" +
                       std::string(fault.scene) + "\n");
    std::vector<std::string> options{"--shots", "1", "--patience", "2"};
    options.insert(options.end(), fault.options.begin(), fault.options.end());
    start_tether(options);
    EXPECT_EQ(status(), fault.status);
    const std::string said = output_.substr(std::min(output_.find("\n\n"), output_.size()));
    if (getenv("SHOW_FAULTS"))
        std::fprintf(stderr, "== %s (%s)\n%s", fault.name, fault.scene, said.c_str());
    expect_in_order(said, fault.said);
}

const std::vector<std::string> complete{"1 shot, 1 file, ", "; nothing lost.\n"};
const std::vector<std::string> lost{"1 shot, 0 files, ", "; 1 shot lost.\n", "! shot 1 of 1: "};

const std::vector<Fault> faults{
    // The session.
    {"InitFails", "every Init answers false", {}, "status 1", {"! The camera SDK could not be"}},
    {"EnumFails", "next EnumCameraObjects answers 0x8402", {}, "status 0", complete},
    {"EnumFailsWithList",
     "next EnumCameraObjects answers 0x8402 with list",
     {},
     "status 0",
     complete},
    {"EnumGivesNull", "next EnumCameraObjects gives null", {}, "status 0", complete},
    {"EnumGivesNothing", "next EnumCameraObjects gives nothing", {}, "status 0", complete},
    {"EnumGivesTooMany", "next EnumCameraObjects gives 3", {}, "status 0", complete},
    {"EnumIsLate", "next EnumCameraObjects late 1s", {}, "status 0", complete},
    {"ListIsNotTakenBack", "next ReleaseEnumeration late 1s", {}, "status 0", complete},
    {"ConnectFails", "next Connect answers 0x8402", {}, "status 0", complete},
    {"ConnectIsLate", "next Connect late 1s", {}, "status 0", complete},
    {"AnswerIsLate", "answer late 2s", {}, "status 0", complete},
    {"AnswerComesFirst", "answer before return", {}, "status 0", complete},
    {"DisconnectFails", "next Disconnect answers 0x8402", {}, "status 0", complete},
    {"DisconnectHangs",
     "next Disconnect hangs",
     {},
     "status 1",
     {"1 file", "nothing lost", "! the worker "}},
    {"ReleaseFails", "next Release answers false", {}, "status 0", complete},
    // The settings.
    {"FolderIsRefused", "every SetSaveInfo answers 0x8402", {}, "status 1", {"! "}},
    {"DestinationIsLate", "next SetDeviceProperty 0x0119 answers 0x8402", {}, "status 0", complete},
    {"DestinationIsRefused",
     "every SetDeviceProperty 0x0119 answers 0x8000",
     {},
     "status 1",
     {"! "}},
    {"TypeIsLate",
     "next 3 SetDeviceProperty 0x0106 answers 0x8402",
     {"--file-type", "jpeg"},
     "status 0",
     complete},
    {"TypeIsRefused",
     "every SetDeviceProperty 0x0106 answers 0x8000",
     {"--file-type", "both"},
     "status 1",
     {"! "}},
    {"TypeIsUnreadable",
     "every GetSelectDeviceProperties 0x0106 gives unreadable",
     {"--file-type", "both"},
     "status 1",
     {"! "}},
    {"TypeIsUnknown",
     "every GetSelectDeviceProperties 0x0106 gives 77",
     {"--file-type", "both"},
     "status 1",
     {"! "}},
    {"PropertiesFail", "every GetSelectDeviceProperties answers 0x8402", {}, "status 1", {"! "}},
    {"PropertiesGiveNull", "every GetSelectDeviceProperties gives null", {}, "status 1", {"! "}},
    {"PropertiesGiveNothing",
     "every GetSelectDeviceProperties gives nothing",
     {},
     "status 1",
     {"! "}},
    {"CardIsOut", "card out", {"--save-dest", "both"}, "status 1", {"1 file", "! "}},
    // The shutter.
    {"NoFocus", "no focus", {}, "status 1", lost},
    {"ShutterIsRefused", "every SendCommand answers 0x8402", {}, "status 1", lost},
    {"HalfPressIsRefused", "every SetDeviceProperty 0x0001 answers 0x8402", {}, "status 1", lost},
    {"BufferIsFull", "buffer 0", {}, "status 1", lost},
    {"CardIsFull", "card full", {"--save-dest", "card"}, "status 0", {"1 shot, 0 files, "}},
    // The files.
    {"FileIsTruncated",
     "next file truncated",
     {},
     "status 1",
     {", damaged\n", "1 shot, 1 file, ", "; 1 shot incomplete.\n", "! shot 1 of 1: "}},
    {"FileIsMissing", "next file missing", {}, "status 1", lost},
    {"FileIsReportedTwice", "next file twice", {}, "status 0", complete},
    {"FileIsReportedByItsWholePath", "next file absolute", {}, "status 0", complete},
    {"FileIsReportedByAnotherName",
     "next file named other.JPG",
     {},
     "status 1",
     {"! shot 1 of 1: "}},
    {"FileIsReportedWithoutName", "next file named null", {}, "status 1", {"! shot 1 of 1: "}},
    {"FileIsReportedByAnotherNumber", "next file number 7", {}, "status 1", {"! shot 1 of 1: "}},
    {"FileIsLate", "next file late 1s", {}, "status 0", complete},
    {"FileIsTooLate", "next file late 10s", {}, "status 1", lost},
    // The pairs.
    {"PairIsReversed",
     "next pair reversed",
     {"--file-type", "both"},
     "status 0",
     {"1 shot, 2 files, ", "; nothing lost.\n"}},
    {"PairIsHalf",
     "next pair half",
     {"--file-type", "both"},
     "status 1",
     {"1 shot, 1 file, ", "; 1 shot incomplete.\n",
      "! shot 1 of 1: Only one half of the shot came.\n"}},
};

INSTANTIATE_TEST_SUITE_P(Faults, ShootFaultTest, testing::ValuesIn(faults),
                         [](const auto& test) { return test.param.name; });

// Found, opened, and silent: not the same as no camera.
TEST_F(CommandTest, ACameraThatDoesNotAnswerIsNotCalledMissing) {
    write("scene", "timing instant\ncamera \"MODEL-A\" over USB, card in\nanswer never\n");
    start_tether({"--shots", "1"});
    EXPECT_EQ(status(), "status 1");
    EXPECT_TRUE(printed("\n! The camera does not answer.\n")) << output_;
    EXPECT_FALSE(printed("No camera was found")) << output_;
}

TEST_F(CommandTest, NoCameraIsSaidSo) {
    write("scene", "timing instant\nno camera\n");
    start_tether({"--shots", "1"});
    EXPECT_EQ(status(), "status 1");
    EXPECT_TRUE(printed("\n! No camera was found.\n")) << output_;
}

}  // namespace
