// What an open folder remembers of the pictures that may still get their other half.
#include "host/pictures/folder.h"

#include <fcntl.h>

#include "tests/host/pictures/desk.h"

namespace {

using namespace host::pictures;
using host::Kind;

Placing placing(Kind kind, const std::string& pair, const std::string& from,
                const std::string& path) {
    Placing placing;
    placing.picture.kind = kind;
    placing.picture.pair = pair;
    placing.picture.path = path;
    placing.picture.shot = 7;
    placing.picture.tag = "a tag";
    placing.run = "run-1";
    placing.from = from;
    return placing;
}

TEST(PairsOfAFolder, KnowTheFirstHalfAndTheKindsThatHaveCome) {
    Pairs pairs;
    pairs.remember(placing(Kind::raw, "one", "DSC1.ARW", "a/b/Name.v2.ARW"));
    pairs.remember(placing(Kind::developed, "two", "DSC2.JPG", "Other.JPG"));
    const Pair* const one = pairs.named("one");
    ASSERT_NE(one, nullptr);
    EXPECT_EQ(one->name, "one");
    EXPECT_EQ(one->run, "run-1");
    EXPECT_EQ(one->camera_stem, "dsc1");
    EXPECT_EQ(one->folder, "a/b");
    EXPECT_EQ(one->stem, "Name.v2");
    EXPECT_EQ(one->shot, 7U);
    EXPECT_EQ(one->tag, "a tag");
    EXPECT_TRUE(one->raw);
    EXPECT_FALSE(one->developed);
    const Pair* const two = pairs.named("two");
    ASSERT_NE(two, nullptr);
    EXPECT_EQ(two->folder, "");
    EXPECT_EQ(two->stem, "Other");
    EXPECT_FALSE(two->raw);
    EXPECT_TRUE(two->developed);
    EXPECT_EQ(pairs.named("three"), nullptr);

    pairs.remember(placing(Kind::developed, "one", "DSC1.JPG", "elsewhere.JPG"));
    EXPECT_EQ(pairs.named("one"), one) << "the same one";
    EXPECT_EQ(one->stem, "Name.v2");
    EXPECT_TRUE(one->raw && one->developed);
}

TEST(PairsOfAFolder, LackTheKindThatTheLatestOfAStemHasNot) {
    Pairs pairs;
    pairs.remember(placing(Kind::raw, "raw", "DSC1.ARW", "1.ARW"));
    pairs.remember(placing(Kind::developed, "developed", "dsc2.jpg", "2.JPG"));
    pairs.remember(placing(Kind::raw, "both", "DSC3.ARW", "3.ARW"));
    pairs.remember(placing(Kind::developed, "both", "DSC3.JPG", "3.JPG"));
    pairs.remember(placing(Kind::other, "movie", "DSC4.MP4", "4.MP4"));
    const auto lacking = [&](Kind kind, const char* run, const char* stem) -> std::string {
        const Pair* const pair = pairs.lacking(kind, run, stem);
        return pair == nullptr ? "" : pair->name;
    };
    EXPECT_EQ(lacking(Kind::developed, "run-1", "dsc1"), "raw");
    EXPECT_EQ(lacking(Kind::raw, "run-1", "DSC2"), "developed");
    for (const char* stem : {"DSC1", "DSC3", "DSC4", "DSC5"}) {
        EXPECT_EQ(lacking(Kind::raw, "run-1", stem), "") << stem;
    }
    for (const char* stem : {"DSC2", "DSC3", "DSC4", "DSC5"}) {
        EXPECT_EQ(lacking(Kind::developed, "run-1", stem), "") << stem;
    }
    for (const char* stem : {"DSC1", "DSC2", "DSC3", "DSC4"}) {
        EXPECT_EQ(lacking(Kind::other, "run-1", stem), "") << stem;
        EXPECT_EQ(lacking(Kind::developed, "run-2", stem), "") << stem;
    }
    EXPECT_EQ(pairs.named("movie"), nullptr);

    // The camera counts from the start again.
    pairs.remember(placing(Kind::developed, "later", "DSC1.JPG", "1-2.JPG"));
    EXPECT_EQ(lacking(Kind::developed, "run-1", "DSC1"), "");
    EXPECT_EQ(lacking(Kind::raw, "run-1", "DSC1"), "later");
}

TEST(PairsOfAFolder, AreThoseOfTheLatest512) {
    Pairs pairs;
    const auto remember = [&](int number) {
        const std::string name = std::to_string(number);
        pairs.remember(placing(Kind::raw, name, "DSC" + name + ".ARW", name + ".ARW"));
    };
    for (int number = 1; number <= 512; ++number) {
        remember(number);
    }
    EXPECT_NE(pairs.named("1"), nullptr);
    remember(513);
    EXPECT_EQ(pairs.named("1"), nullptr);
    EXPECT_NE(pairs.named("2"), nullptr);
    EXPECT_NE(pairs.named("513"), nullptr);
}

TEST(ARun, KnowsANamePlacedWhateverItsCase) {
    host::pictures::Run run;
    EXPECT_FALSE(run.was_placed("DSC1.JPG"));
    run.remember_placed("DSC1.JPG");
    EXPECT_TRUE(run.was_placed("dsc1.jpg"));
    EXPECT_FALSE(run.was_placed("DSC1.ARW"));
}

TEST(AnOpenFolder, IsFoundWhereItHasBeenMovedTo) {
    const TemporaryFolder folder;
    fs::create_directory(folder.path() / "before");
    const host::Descriptor open(
        ::open((folder.path() / "before").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    fs::rename(folder.path() / "before", folder.path() / "now");
    EXPECT_EQ(path_now(open.number(), "otherwise"), folder.path() / "now");
    const host::Descriptor root(::open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    EXPECT_EQ(path_now(root.number(), "otherwise"), "/");
    EXPECT_EQ(path_now(-1, "otherwise"), "otherwise");
    const auto pipe = host::make_pipe();
    ASSERT_TRUE(pipe);
    EXPECT_EQ(path_now(pipe->read_end.number(), "otherwise"), "otherwise") << "it has no path";
}

}  // namespace
