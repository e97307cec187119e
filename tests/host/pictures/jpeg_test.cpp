// Which JPEGs are all there: what each marker means, and where the data is not read.

#include <set>

#include "tests/host/pictures/whole_file.h"

namespace {

const std::string early = "it ends before its picture does";
const std::string no_picture = "it ends before its picture";
const std::string damaged = "its segments are damaged";

class WholeJpeg : public Whole {
  protected:
    std::string why_not(const std::string& content) {
        return why(content, "a.JPG");
    }

    const std::string begin_ = "\xFF\xD8";
    const std::string frame_ = segment(0xC0, std::string("\x08\0\1\0\1\1\1\x11\0", 9));
    const std::string scan_ = segment(0xDA, std::string("\1\1\0\0\x3F\0", 6));
    const std::string end_ = "\xFF\xD9";
    const std::string head_ = begin_ + frame_ + scan_;
    // No marker may stand in a scan's data: whoever reads this one says so.
    const std::string unreadable_ = "\xFF\xD8";
};

TEST_F(WholeJpeg, EveryMarkerHasItsMeaning) {
    const std::set<int> frames{0xC0, 0xC1, 0xC2, 0xC3, 0xC5, 0xC6, 0xC7,
                               0xC9, 0xCA, 0xCB, 0xCD, 0xCE, 0xCF};
    for (int code = 0; code <= 0xFF; ++code) {
        const std::string marker{'\xFF', static_cast<char>(code)};
        const bool alone = code == 0x01 || (code >= 0xD0 && code <= 0xD7);
        const bool wrong = code == 0x00 || code == 0xD8;
        // Bytes behind the end, so that the data is read.
        EXPECT_EQ(why_not(begin_ + marker + frame_.substr(2) + scan_ + "data" + end_ + "behind"),
                  wrong || alone || code == 0xFF ? damaged
                  : frames.count(code) > 0       ? ""
                                                 : no_picture)
            << "in place of the frame: " << code;
        EXPECT_EQ(why_not(begin_ + marker + head_.substr(2) + "data" + end_ + "behind"),
                  alone || code == 0xFF ? ""
                  : wrong               ? damaged
                  : code == 0xD9        ? no_picture
                                        : early)
            << "in front of the frame: " << code;
        EXPECT_EQ(why_not(head_ + "data" + marker + "more" + end_ + "behind"),
                  code == 0x00 || alone || code == 0xD9 ? ""
                  : code == 0xD8                        ? damaged
                                                        : early)
            << "in the data: " << code;
    }
}

TEST_F(WholeJpeg, ASegmentHasTheLengthThatItSays) {
    const std::string data = "data" + end_;
    const std::string rest = head_.substr(2) + data;
    const auto extension = [&](std::size_t length) {
        return why_not(begin_ + "\xFF\xE0" + big_endian(length, 2) + rest);
    };
    const auto scan = [&](std::size_t length) {
        return why_not(begin_ + frame_ + "\xFF\xDA" + big_endian(length, 2) + data);
    };
    for (const std::size_t length : {0, 1}) {
        EXPECT_EQ(extension(length), damaged);
        EXPECT_EQ(scan(length), damaged);
    }
    EXPECT_EQ(extension(2), "");
    EXPECT_EQ(extension(2 + rest.size() + 1), early);
    for (const std::string& cut :
         {begin_, begin_ + frame_, head_, head_ + "data", head_ + "\xFF"}) {
        EXPECT_EQ(why_not(cut), early);
    }
    EXPECT_EQ(why_not(begin_ + frame_ + end_), no_picture);
    EXPECT_EQ(why_not(begin_ + scan_ + "data" + end_), no_picture);
}

TEST_F(WholeJpeg, DataIsNotReadWhereTheFileEndsWithItsEnd) {
    EXPECT_EQ(why_not(head_ + unreadable_ + end_), "");
    EXPECT_EQ(why_not(head_ + unreadable_ + end_ + "behind"), damaged);
    EXPECT_EQ(why_not(head_ + end_), "");
    EXPECT_EQ(why_not(begin_ + frame_ + segment(0xDA, "\1\1\1\1" + end_)), early)
        << "that is no end but a part of the scan's head";
    EXPECT_EQ(why_not(begin_ + segment(0xE2, "ICC_PROFILE") + head_.substr(2) + unreadable_ + end_),
              "")
        << "this is no index of pictures";
}

TEST_F(WholeJpeg, AnIndexOfPicturesIsReadInBothOrders) {
    // In whose directory others stand in front of the entry that counts.
    const auto indexed = [&](bool little, std::size_t others, std::size_t counted,
                             int code = 0xE2) {
        const auto number = [&](std::size_t value, int count) {
            return little ? little_endian(value, count) : big_endian(value, count);
        };
        const std::size_t directory = 12;
        const std::size_t behind = directory + 2 + 12 * (others + 1);
        std::string index = std::string("MPF\0", 4) + (little ? "II" : "MM") + number(42, 2) +
                            number(directory, 4) + "none" + number(counted, 2);
        for (std::size_t other = 0; other < others; ++other) {
            index += number(0xB001, 2) + number(7, 2) + number(0x01010101, 4) + "some";
        }
        index += number(0xB002, 2) + number(7, 2) + number(32, 4) + number(behind, 4) + "some";
        const std::string picture = head_.substr(2) + unreadable_ + end_;
        const std::size_t all = begin_.size() + 4 + index.size() + 8 + picture.size();
        return begin_ + segment(code, index + number(all, 4) + "some") + picture + "behind";
    };
    for (const bool little : {true, false}) {
        EXPECT_EQ(why_not(indexed(little, 0, 1)), "");
        EXPECT_EQ(why_not(indexed(little, 15, 16)), "");
        EXPECT_EQ(why_not(indexed(little, 16, 17)), damaged) << "no camera's has as many";
        EXPECT_EQ(why_not(indexed(little, 1, 1)), damaged) << "behind the last entry";
        EXPECT_EQ(why_not(indexed(little, 0, 1, 0xE1)), damaged) << "of another segment";
    }
}

}  // namespace
