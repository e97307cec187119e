// The closing words of a shoot.
#include "tether/shoot/summary.h"

#include <gtest/gtest.h>

namespace {

using namespace tether;
using std::chrono::milliseconds;

TEST(Summary, NamesEveryFileAndTheTimes) {
    Report report;
    report.shots = {{{}, {{"/s/DSC1.JPG", 4'400'000, milliseconds(1900)}}},
                    {{},
                     {{"/s/DSC00002.JPG", 999, milliseconds(1500)},
                      {"/s/DSC00002.ARW", 24'060'000, milliseconds(2500)}}}};
    EXPECT_EQ(summary(report, "/s"),
              "\n"
              "  DSC1.JPG         4.4 MB  1.90 s\n"
              "  DSC00002.JPG      999 B  1.50 s\n"
              "  DSC00002.ARW    24.1 MB  2.50 s\n"
              "\n"
              "2 shots, 3 files, 28.5 MB in /s; nothing lost.\n"
              "From shutter to file 1.90 s in the median, 2.50 s at worst.\n");
}

TEST(Summary, SaysWhatWentWrong) {
    Report report;
    report.shots = {{{}, {}}};
    report.unasked = {{"/s/DSC00007.JPG", 1000, {}}};
    report.without_picture = 1;
    report.connection_losses = 2;
    report.troubles = {"shot 1 of 1 was lost with the camera"};
    EXPECT_EQ(summary(report, "/s"),
              "\n"
              "  DSC00007.JPG     1.0 kB  not asked for\n"
              "\n"
              "1 shot, 1 file, 1.0 kB in /s; 1 shot lost.\n"
              "The camera went away 2 times.\n"
              "! shot 1 of 1 was lost with the camera\n");
}

TEST(Summary, MedianOfAnEvenNumberLiesBetweenTheMiddleTwo) {
    Report report;
    for (const int took : {4000, 1000, 3000, 2000}) {
        report.shots.push_back({{}, {{"/s/a.JPG", 1, milliseconds(took)}}});
    }
    EXPECT_NE(summary(report, "/s").find("2.50 s in the median, 4.00 s at worst"),
              std::string::npos);
}

TEST(Summary, SizesAreRoundedToTheirUnit) {
    EXPECT_EQ(in_bytes(0), "0 B");
    EXPECT_EQ(in_bytes(999), "999 B");
    EXPECT_EQ(in_bytes(1000), "1.0 kB");
    EXPECT_EQ(in_bytes(999'949), "999.9 kB");
    EXPECT_EQ(in_bytes(999'950), "1.0 MB");
    EXPECT_EQ(in_bytes(5'000'000'000'000), "5000.0 GB");
}

}  // namespace
