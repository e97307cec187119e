// Templates, and which names a file system takes for the same.

#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>

#include "host/pictures/naming/name_template.h"
#include "host/pictures/naming/stems.h"
#include "host/pictures/store.h"

namespace {

using host::pictures::fold_case;
using host::pictures::NameFacts;
using host::pictures::spot_for;
using host::pictures::why_no_name;

TEST(NameTemplate, TheseNameFiles) {
    for (const char* good : {"", "{camera}", "{date}/{time}-{n:4}", "shoot {shot:3}", "a/b/{n}",
                             "Zo\xC3\xAB-{n:12}", "x..y", "{date}-{camera}"}) {
        EXPECT_EQ(why_no_name(good), "") << good;
    }
}

TEST(NameTemplate, TheseAreRefusedInASentence) {
    const std::string too_long(300, 'x');
    for (const std::string& bad : {std::string("../{camera}"),
                                   std::string("a/../b"),
                                   std::string(".hidden"),
                                   std::string("a/.b/c"),
                                   std::string("/a"),
                                   std::string("a/"),
                                   std::string("a//b"),
                                   std::string("{unknown}"),
                                   std::string("{n"),
                                   std::string("n}"),
                                   std::string("{n:0}"),
                                   std::string("{n:13}"),
                                   std::string("{n:}"),
                                   std::string("{n:x}"),
                                   std::string("{n:+4}"),
                                   std::string("{camera:4}"),
                                   std::string("{date:4}"),
                                   std::string("a\nb"),
                                   std::string("a\0b", 3),
                                   std::string("a:b"),
                                   std::string("a\\b"),
                                   std::string("a*"),
                                   std::string("a."),
                                   std::string("a "),
                                   std::string("a /b"),
                                   std::string("\xFF"),
                                   std::string("{}"),
                                   std::string("{{n}}"),
                                   too_long,
                                   std::string("{") + too_long}) {
        const std::string why = why_no_name(bad);
        EXPECT_FALSE(why.empty()) << bad;
        EXPECT_EQ(why.substr(0, 9), "The name ") << why;
        EXPECT_EQ(why.back(), '.') << why;
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
}

TEST(Stems, CaseIsFoldedWhereAFileSystemMayFoldIt) {
    for (const auto& [one, other] :
         {std::pair{"DSC00001", "dsc00001"}, std::pair{"\xC3\x89\x63", "\xC3\xA9\x43"},  // É
          std::pair{"\xC5\xA0", "\xC5\xA1"},                                             // Š
          std::pair{"\xC5\xBD", "\xC5\xBE"},                                             // Ž
          std::pair{"\xCE\xA9", "\xCF\x89"},                                             // Ω
          std::pair{"\xD0\x96", "\xD0\xB6"},                                             // Ж
          std::pair{"\xD0\x81", "\xD1\x91"}}) {                                          // Ё
        EXPECT_EQ(fold_case(one), fold_case(other)) << one;
    }
    EXPECT_NE(fold_case("\xC3\x97"), fold_case("\xC3\xB7"));  // × and ÷
    EXPECT_EQ(fold_case("\xFF\xC3"), "\xFF\xC3");
}

TEST(Stems, AnEndingBeginsAtTheLastPoint) {
    EXPECT_EQ(host::pictures::stem_of("a.b.JPG"), "a.b");
    EXPECT_EQ(host::pictures::ending_of("a.b.JPG"), ".JPG");
    EXPECT_EQ(host::pictures::stem_of(".JPG"), ".JPG");
    EXPECT_EQ(host::pictures::ending_of("JPG"), "");
}

}  // namespace
