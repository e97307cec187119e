// Templates, and which names a file system takes for the same.

#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

#include "host/pictures/naming/name_template.h"
#include "host/pictures/naming/stems.h"
#include "host/pictures/store.h"

namespace {

using host::pictures::fold_case;
using host::pictures::NameFacts;
using host::pictures::spot_for;
using host::pictures::why_no_name;

TEST(NameTemplate, TheseNameFiles) {
    for (const std::string& good :
         {std::string(), std::string("{camera}"), std::string("{date}/{time}-{n:4}"),
          std::string("shoot {shot:3}"), std::string("a/b/{n}"), std::string("Zo\xC3\xAB-{n:12}"),
          std::string("{n:1}"), std::string("x..y"), std::string("{date}-{camera}"),
          std::string(192, 'x') + "{camera}", "{n}" + std::string(199, 'x'),
          std::string(199, 'x') + "{shot}"}) {
        EXPECT_EQ(why_no_name(good), "") << good;
    }
    std::string longest;
    while (longest.size() < 1024) {
        longest += longest.size() % 128 == 127 ? "/" : "x";
    }
    longest.back() = 'x';
    EXPECT_EQ(why_no_name(longest), "");
    EXPECT_EQ(why_no_name(longest + "x"), "The name is longer than 1024 bytes.");
}

TEST(NameTemplate, TheseAreRefusedInASentence) {
    const auto unknown = [](const std::string& word) {
        return "has {" + word +
               "} in it: known are {camera}, {date}, {time}, {shot} and {n}, the last two with a "
               "width from 1 to 12 as in {n:4}.";
    };
    const auto has = [](const std::string& byte) {
        return "has \"" + byte + "\" in it, which not every disk takes.";
    };
    const std::string begins =
        "has a part that begins with a point: it would be hidden, or lead out of the folder.";
    const std::string ends =
        "has a part that ends with a space or a point, which not every disk takes.";
    const std::string empty =
        "has an empty part: it begins or ends with a slash, or has two in a row.";
    const std::string brace = "has a brace without its other one.";
    const std::string control = "has a control character in it.";
    const std::string long_part = "has a part of more than 200 bytes.";
    const std::string too_long(201, 'x');
    std::vector<std::pair<std::string, std::string>> refused{
        {"../{camera}", begins},
        {"a/../b", begins},
        {".hidden", begins},
        {"a/.b/c", begins},
        {"/a", empty},
        {"a/", empty},
        {"a//b", empty},
        {"{n", brace},
        {"n}", brace},
        {"{n}}", brace},
        {"a\nb", control},
        {"a\x1F", control},
        {"a\x7F", control},
        {{"a\0b", 3}, control},
        {"a.", ends},
        {"a ", ends},
        {"a /b", ends},
        {"\xFF", "is not UTF-8."},
        {"{{n}}", unknown("{n")},
        {too_long, long_part},
        {"a/" + too_long, long_part},
        {std::string(193, 'x') + "{camera}", long_part},
        {"{" + too_long, brace}};
    for (const char* word : {"unknown", "n:0", "n:13", "n:004", "n:", "n:x", "n:+4", "n:4:4",
                             "shot:0", "camera:4", "date:4", "time:", ""}) {
        refused.emplace_back("{n}{" + std::string(word) + "}", unknown(word));
    }
    for (const char* byte : {"\\", ":", "*", "?", "\"", "<", ">", "|"}) {
        refused.emplace_back("a" + std::string(byte), has(byte));
    }
    for (const auto& [bad, why] : refused) {
        EXPECT_EQ(why_no_name(bad), "The name " + why) << bad;
    }
}

TEST(NameTemplate, WordsStandForWhatTheySay) {
    ::setenv("TZ", "UTC0", 1);
    ::tzset();
    const NameFacts facts{"DSC00001", 12, 345, std::chrono::milliseconds(1714567890123)};
    EXPECT_EQ(spot_for("{date}/{time}_{camera}_{shot}_{n:5}", facts).folder, "2024-05-01");
    EXPECT_EQ(spot_for("{date}/{time}_{camera}_{shot}_{n:5}", facts).stem,
              "12-51-30_DSC00001_12_00345");
    EXPECT_EQ(spot_for("", facts).stem, "DSC00001");
    EXPECT_EQ(spot_for("{shot:2}", {"", {}, 0, {}}).stem, "00");
    EXPECT_EQ(spot_for("a/b/{n:3}", facts).folder, "a/b");
    EXPECT_EQ(spot_for("{n:3}", facts).stem, "345");
}

TEST(Stems, CaseIsFoldedWhereAFileSystemMayFoldIt) {
    // Of each range of letters its first and its last.
    for (const auto& [one, other] :
         {std::pair{"DSC00001AZ", "dsc00001az"}, std::pair{"\xC3\x89\x43", "\xC3\xA9\x63"},  // É
          std::pair{"\xC3\x80\xC3\x9E", "\xC3\xA0\xC3\xBE"},     // À Þ
          std::pair{"\xC4\x80\xC4\xB6", "\xC4\x81\xC4\xB7"},     // Ā Ķ
          std::pair{"\xC4\xB9\xC5\x87", "\xC4\xBA\xC5\x88"},     // Ĺ Ň
          std::pair{"\xC5\x8A\xC5\xB6", "\xC5\x8B\xC5\xB7"},     // Ŋ Ŷ
          std::pair{"\xC5\xB9\xC5\xBD", "\xC5\xBA\xC5\xBE"},     // Ź Ž
          std::pair{"\xCE\x91\xCE\xA9", "\xCE\xB1\xCF\x89"},     // Α Ω
          std::pair{"\xD0\x80\xD0\x8F", "\xD1\x90\xD1\x9F"},     // Ѐ Џ
          std::pair{"\xD0\x90\xD0\xAF", "\xD0\xB0\xD1\x8F"}}) {  // А Я
        EXPECT_EQ(fold_case(one), other);
        EXPECT_EQ(fold_case(other), other);
    }
    // ×, ÷, ß, ĸ, ŉ, ſ, ΐ, and what stands beside the alphabet.
    for (const char* same : {"\xC3\x97", "\xC3\xB7", "\xC3\x9F", "\xC4\xB8", "\xC5\x89", "\xC5\xBF",
                             "\xCE\x90", "@[`{"}) {
        EXPECT_EQ(fold_case(same), same);
    }
    EXPECT_EQ(fold_case("\xFF\xC3"), "\xFF\xC3");
}

TEST(Stems, AnEndingBeginsAtTheLastPoint) {
    EXPECT_EQ(host::pictures::stem_of("a.b.JPG"), "a.b");
    EXPECT_EQ(host::pictures::ending_of("a.b.JPG"), ".JPG");
    EXPECT_EQ(host::pictures::stem_of(".JPG"), ".JPG");
    EXPECT_EQ(host::pictures::ending_of("JPG"), "");
}

}  // namespace
