// Names and times that a scene may give its camera.

#include <climits>
#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>

#include "tests/simulator/pictures/picture_fixture.h"

namespace {

class Text : public PictureTest {
  protected:
    // Both formats hold the shot's facts; exiftool prints one behind the other.
    std::string read_back(const CameraSimPicture& shot, const std::string& entries) const {
        CameraSimPicture either = shot;
        either.path = jpeg.c_str();
        EXPECT_EQ(draw_jpeg(&either), 0);
        either.path = raw.c_str();
        EXPECT_EQ(draw_raw(&either), 0);
        return exiftool("-b " + entries + " " + jpeg + " " + raw);
    }

    // Of a model name and of a serial number, and then as the unique name that a DNG wants besides.
    void expect_text(const char* text, const std::string& expected) const {
        CameraSimPicture shot = picture("");
        shot.model = text;
        shot.serial = text;
        EXPECT_EQ(read_back(shot, "-Model -SerialNumber -CameraSerialNumber"),
                  expected + expected + expected + expected);
        EXPECT_EQ(exiftool("-b -UniqueCameraModel " + raw),
                  expected.empty() ? "Virtual" : expected);
        const std::string facts = output_of("dcraw", "dcraw", "-i -v " + raw);
        EXPECT_NE(facts.find("DNG Version"), std::string::npos) << facts;
    }

    void expect_time(long long seconds, const std::string& expected) const {
        CameraSimPicture shot = picture("");
        shot.time_seconds = seconds;
        EXPECT_EQ(read_back(shot, "-DateTimeOriginal"), expected + expected) << seconds;
    }

    std::string jpeg = path("a.JPG");
    std::string raw = path("a.ARW");
};

TEST_F(Text, IsKeptByteForByte) {
    for (const char* text :
         {"A", "quoted \"text\" 'here'", "back\\slash|pipe%41", "Üñïcødé カメラ 📷", "two\nlines"}) {
        expect_text(text, text);
    }
}

TEST_F(Text, IsLeftOutWhenThereIsNone) {
    expect_text("", "");
    expect_text(nullptr, "");
}

TEST_F(Text, IsCutBetweenCharactersWhenVeryLong) {
    expect_text(std::string(255, 'x').c_str(), std::string(255, 'x'));
    expect_text(std::string(300'000, 'x').c_str(), std::string(255, 'x'));

    std::string cameras = "x";
    std::string cut = "x";
    for (int count = 0; count < 5000; ++count) {
        cameras += "カ";
        cut += count < 84 ? "カ" : "";
    }
    expect_text(cameras.c_str(), cut);
}

TEST_F(Text, TellsTheTimeInUtcWhereverItRuns) {
    setenv("TZ", "JST-9", 1);
    tzset();
    expect_time(1772366400, "2026:03:01 12:00:00");
    unsetenv("TZ");
    tzset();
    expect_time(0, "1970:01:01 00:00:00");
    expect_time(-1, "1969:12:31 23:59:59");
    expect_time(253402300799, "9999:12:31 23:59:59");
}

TEST_F(Text, DoesNotInventATime) {
    for (const long long seconds : {253402300800LL, LLONG_MAX, LLONG_MIN}) {
        expect_time(seconds, "    :  :     :  :  ");
    }
}

}  // namespace
