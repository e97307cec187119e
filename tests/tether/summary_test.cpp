// The closing words of a shoot.
#include "tether/shoot/summary.h"

#include <gtest/gtest.h>
#include <optional>
#include <string>

namespace {

using host::Code;
using host::ShotStatus;
using std::chrono::milliseconds;

host::Picture picture(const std::string& path, std::uint64_t bytes,
                      std::optional<std::uint64_t> shot, int took) {
    host::Picture picture;
    picture.path = path;
    picture.bytes = bytes;
    picture.shot = shot;
    picture.whole = true;
    if (shot) {
        picture.after = milliseconds(took);
    }
    return picture;
}

host::Shot shot(std::uint64_t number, ShotStatus status = ShotStatus::complete) {
    host::Shot shot;
    shot.number = number;
    shot.status = status;
    return shot;
}

tether::Report ended_in_order(unsigned int planned) {
    tether::Report report;
    report.planned = planned;
    report.ended = host::Ended{host::WorkerEnd::quit, 0};
    return report;
}

TEST(Summary, NamesEveryFileAndTheTimes) {
    tether::Report report = ended_in_order(2);
    report.shots = {shot(4), shot(5)};
    report.pictures = {picture("/s/DSC1.JPG", 4'400'000, 4, 1900),
                       picture("/s/a/DSC00002.JPG", 999, 5, 1500),
                       picture("/s/a/DSC00002.ARW", 24'060'000, 5, 2500)};
    EXPECT_EQ(summary(report, "/s"),
              "\n"
              "  DSC1.JPG           4.4 MB  1.90 s\n"
              "  a/DSC00002.JPG      999 B  1.50 s\n"
              "  a/DSC00002.ARW    24.1 MB  2.50 s\n"
              "\n"
              "2 shots, 3 files, 28.5 MB in /s; nothing lost.\n"
              "From shutter to file 1.90 s in the median, 2.50 s at worst.\n");
    EXPECT_TRUE(report.good());
}

TEST(Summary, SaysWhatWentWrong) {
    tether::Report report = ended_in_order(4);
    report.shots = {shot(1, ShotStatus::none), shot(2, ShotStatus::incomplete), shot(3),
                    shot(4, ShotStatus::refused)};
    report.shots[0].problems = {
        {Code::no_picture, "The shot brought no picture in time.", 0x25102, {}}};
    report.shots[3].problems = {{Code::folder_gone, "The folder was moved.", {}, {}}};
    report.pictures = {picture("/s/DSC00007.JPG", 1000, {}, 0),
                       picture("/s/DSC00008.JPG", 1000, 2, 900),
                       picture("/s/DSC00009.JPG", 1000, 3, 800)};
    report.pictures[1].whole = false;
    report.losses = 2;
    report.add_trouble("one thing");
    report.add_trouble("one thing");
    EXPECT_EQ(summary(report, "/s"),
              "\n"
              "  DSC00007.JPG     1.0 kB  late or not asked for\n"
              "  DSC00008.JPG     1.0 kB  0.90 s, damaged\n"
              "  DSC00009.JPG     1.0 kB  0.80 s\n"
              "\n"
              "3 of 4 shots, 3 files, 3.0 kB in /s; 1 shot without a picture in time, "
              "1 shot incomplete, 1 shot not fired.\n"
              "From shutter to file 0.85 s in the median, 0.90 s at worst.\n"
              "The camera went away 2 times.\n"
              "! shot 1 of 4: The shot brought no picture in time (0x00025102).\n"
              "! shot 4 of 4: The folder was moved.\n"
              "! one thing\n");
    EXPECT_FALSE(report.good());
}

TEST(Summary, ShotsThatWereNeverTriedAreNotFired) {
    tether::Report report = ended_in_order(3);
    report.add_trouble("No camera was found.");
    EXPECT_EQ(summary(report, "/s"),
              "\n0 of 3 shots, 0 files, 0 B in /s; 3 shots not fired.\n! No camera was found.\n");
}

TEST(Summary, ASentenceThatSaysMoreTakesTheOthersPlace) {
    tether::Report report = ended_in_order(1);
    report.shots = {shot(1)};
    report.add_trouble("The worker ended.");
    report.add_trouble("The worker ended. No more are tried.");
    report.add_trouble("The worker ended.");
    EXPECT_EQ(report.troubles, std::vector<std::string>{"The worker ended. No more are tried."});
}

// A name may hold anything: what it holds must not look like a line of the summary.
TEST(Summary, WhatANameHoldsStaysOnItsLine) {
    tether::Report report = ended_in_order(1);
    report.shots = {shot(1)};
    report.shots[0].problems = {
        {Code::picture_not_there, "Not there: a\n1 shot, \x1B[2J\x7F\xC3\xBC", {}, {}}};
    report.pictures = {picture("/s/a\nb.JPG", 1, 1, 900)};
    const std::string text = summary(report, "/s");
    EXPECT_NE(text.find("\n  a\\nb.JPG  "), std::string::npos) << text;
    EXPECT_NE(text.find("\n! shot 1 of 1: Not there: a\\n1 shot, \\x1B[2J\\x7F\xC3\xBC\n"),
              std::string::npos)
        << text;
}

// A picture of another run has a number of a shot too.
TEST(Summary, OnlyItsOwnShotsPicturesWereAskedFor) {
    tether::Report report = ended_in_order(1);
    report.shots = {shot(7)};
    report.pictures = {picture("/s/a.JPG", 1, 6, 900), picture("/s/b.JPG", 1, 7, 700)};
    report.pictures[0].recovered = true;
    const std::string text = summary(report, "/s");
    EXPECT_NE(text.find("  a.JPG        1 B  found later\n"), std::string::npos) << text;
    EXPECT_NE(text.find("From shutter to file 0.70 s.\n"), std::string::npos) << text;
}

TEST(Summary, MedianOfAnEvenNumberLiesBetweenTheMiddleTwo) {
    tether::Report report = ended_in_order(4);
    report.shots = {shot(1)};
    for (const int took : {4000, 1000, 3000, 2000}) {
        report.pictures.push_back(picture("/s/a.JPG", 1, 1, took));
    }
    EXPECT_NE(summary(report, "/s").find("2.50 s in the median, 4.00 s at worst"),
              std::string::npos);
}

TEST(Report, IsGoodOnlyWhenEveryShotIsComplete) {
    const auto good = [](auto change) {
        tether::Report report = ended_in_order(1);
        report.shots = {shot(1)};
        change(report);
        return report.good();
    };
    EXPECT_TRUE(good([](tether::Report&) {}));
    EXPECT_FALSE(good([](tether::Report& report) { report.planned = 2; }));
    for (const ShotStatus status :
         {ShotStatus::none, ShotStatus::incomplete, ShotStatus::refused}) {
        EXPECT_FALSE(good([=](tether::Report& report) { report.shots = {shot(1, status)}; }));
    }
    EXPECT_FALSE(good([](tether::Report& report) {
        report.shots[0].problems = {{Code::picture_outside, "outside", {}, 1}};
    }));
    EXPECT_FALSE(good([](tether::Report& report) {
        report.ended = host::Ended{host::WorkerEnd::sigkill, 137};
    }));
    EXPECT_FALSE(good([](tether::Report& report) { report.ended.reset(); }));
}

TEST(Report, WhatMendsItselfCostsNothingUnlessItCostsAShot) {
    for (const auto& [code, harmless] :
         std::vector<std::pair<Code, bool>>{{Code::camera_lost, true},
                                            {Code::camera_not_found, true},
                                            {Code::worker_gone, true},
                                            {Code::worker_not_starting, true},
                                            {Code::disk_nearly_full, true},
                                            {Code::file_type_not_taken, false},
                                            {Code::destination_not_taken, false},
                                            {Code::card_missing, false},
                                            {Code::picture_damaged, false},
                                            {Code::picture_outside, false},
                                            {Code::picture_not_placed, false}}) {
        tether::Report report = ended_in_order(1);
        report.shots = {shot(1)};
        report.add({code, "text", {}, {}});
        EXPECT_EQ(report.good(), harmless) << host::word(code);
    }
}

}  // namespace
