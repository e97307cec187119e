// Templates, and which names a file system takes for the same.

#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <unistd.h>
#include <utility>
#include <vector>

#include "host/pictures/naming/name_template.h"
#include "host/pictures/naming/stems.h"
#include "host/pictures/store.h"
#include "tests/host/pictures/desk.h"

namespace {

using host::pictures::fold_case;
using host::pictures::NameFacts;
using host::pictures::spot_for;
using host::pictures::why_no_name;

TEST(NameTemplate, TheseNameFiles) {
    for (const std::string& good :
         {std::string(), std::string("{camera}"), std::string("{date}/{time}-{n:4}"),
          std::string("shoot {shot:3}"), std::string("a/b/{n}"), std::string("Zo\xC3\xAB-{n:12}"),
          std::string("{n:1}"), std::string("x..y~"), std::string("{date}-{camera}"),
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
        {"}n}", brace},
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
    EXPECT_EQ(spot_for("{shot:2}-{n}", {}).stem, "00-0");
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
    // ×, ÷, ß, ĸ, ŉ, Ÿ, ſ, ΐ, what stands beside the alphabet, and what takes more bytes.
    for (const char* same : {"\xC3\x97", "\xC3\xB7", "\xC3\x9F", "\xC4\xB8", "\xC5\x89", "\xC5\xB8",
                             "\xC5\xBF", "\xCE\x90", "@[`{", "\xE2\x82\xAC", "\xF0\x9F\x93\xB7"}) {
        EXPECT_EQ(fold_case(same), same);
    }
    EXPECT_EQ(fold_case("\xC3\x41\xFF\xC3"), "\xC3\x61\xFF\xC3") << "no letters of two bytes";
}

class StemsOfAFolder : public testing::Test {
  protected:
    ~StemsOfAFolder() override {
        ::close(descriptor_);
    }
    void add(const std::string& name) {
        write_file(folder_.path() / name, "");
    }
    bool is_taken(const std::string& name) const {
        return host::pictures::is_taken(descriptor_, name);
    }
    std::string free_stem(std::string_view stem, const std::string& ending,
                          std::uint64_t least = 1) const {
        const auto free = host::pictures::free_stem(descriptor_, stem, ending, least);
        EXPECT_EQ(free.error, 0);
        return free.stem;
    }

  private:
    TemporaryFolder folder_;
    const int descriptor_ = ::open(folder_.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
};

TEST_F(StemsOfAFolder, AreTakenInAnyCaseAndByNoOtherLetters) {
    EXPECT_FALSE(is_taken("AZ\xC3\x89.JPG"));
    add("AZ\xC3\x89.JPG.xmp");
    add("AZ\xC3\x88.JPG");
    EXPECT_FALSE(is_taken("az\xC3\xA9.JPG"));
    EXPECT_EQ(free_stem("az\xC3\xA9", ".JPG"), "az\xC3\xA9");
    add("AZ\xC3\x89.jpg");
    EXPECT_TRUE(is_taken("az\xC3\xA9.JPG"));
    EXPECT_EQ(free_stem("az\xC3\xA9", ".JPG"), "az\xC3\xA9-2");
}

TEST_F(StemsOfAFolder, AreCountedWithUpToTenDigits) {
    add("DSC-1234567890.JPG");
    add("DSC-12345678901.JPG");
    EXPECT_EQ(free_stem("DSC", ".JPG", 1234567890), "DSC-1234567891");
    EXPECT_EQ(free_stem("DSC", ".JPG", 12345678901), "DSC-12345678901");
}

TEST_F(StemsOfAFolder, AreCutOnlyWhereTheyAreTooLong) {
    for (const std::size_t size : {3, 240}) {
        // The bytes behind it go on with its last letter, but are none of its own.
        const std::string text = std::string(size, 'a') + std::string(300, '\x80');
        EXPECT_EQ(free_stem(std::string_view(text).substr(0, size), ".JPG"), text.substr(0, size));
    }
}

TEST_F(StemsOfAFolder, AreCutAnywhereWhereNoCharacterBegins) {
    EXPECT_EQ(free_stem(std::string(300, '\x80'), ".JPG"), std::string(240, '\x80'))
        << "not hidden, as .JPG alone would be";
    EXPECT_EQ(free_stem("ab" + std::string(300, '\x80'), ".JPG"), "a");
}

TEST_F(StemsOfAFolder, KeepALetterBesideTheLongestEnding) {
    EXPECT_EQ(free_stem("abc", "." + std::string(241, 'x')), "ab");
    for (const std::size_t size : {243, 244, 300}) {
        EXPECT_EQ(free_stem("abc", std::string(size, 'x')), "a") << size;
    }
}

TEST(Stems, AnEndingBeginsAtTheLastPoint) {
    EXPECT_EQ(host::pictures::stem_of("a.b.JPG"), "a.b");
    EXPECT_EQ(host::pictures::ending_of("a.b.JPG"), ".JPG");
    EXPECT_EQ(host::pictures::stem_of(".JPG"), ".JPG");
    EXPECT_EQ(host::pictures::ending_of("JPG"), "");
}

}  // namespace
