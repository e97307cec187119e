#include "host/brain/shots/stems.h"

#include <gtest/gtest.h>

#include "host/brain/times.h"

namespace host::brain {
namespace {

TEST(StemsTest, TheNextNumberIsNewerAlsoAcrossTheWrap) {
    EXPECT_TRUE(is_newer("DSC00002", "DSC00001"));
    EXPECT_FALSE(is_newer("DSC00001", "DSC00002"));
    EXPECT_FALSE(is_newer("DSC00001", "DSC00001"));
    EXPECT_TRUE(is_newer("DSC00001", "DSC09999"));
    EXPECT_FALSE(is_newer("DSC09999", "DSC00001"));
    EXPECT_TRUE(is_newer("DSC05000", "DSC00001"));
    EXPECT_FALSE(is_newer("DSC05001", "DSC00001")) << "as far ahead as behind";
    EXPECT_TRUE(is_newer("DSC~2", "DSC~1"));
    EXPECT_TRUE(is_newer("100000002", "100000001"));
}

TEST(StemsTest, NamesThatDoNotCountCannotBeCompared) {
    EXPECT_FALSE(is_newer("cat", "dog"));
    EXPECT_FALSE(is_newer("", ""));
    EXPECT_FALSE(is_newer("DSC00002", "IMG00001"));
    EXPECT_FALSE(is_newer("DSC2", "DSC00001"));
    EXPECT_FALSE(is_newer("9999999999", "9999999998"));
}

TEST(StemsTest, OnlyLettersHaveACase) {
    EXPECT_TRUE(same_stem("ABMYZ_1", "abmyz_1"));
    EXPECT_FALSE(same_stem("@", "`"));
    EXPECT_FALSE(same_stem("[", "{"));
}

Stem stem(const std::string& text, Kind kind, bool may_be_pair = true) {
    Stem one;
    one.text = text;
    one.may_be_pair = may_be_pair;
    one.raw = kind == Kind::raw;
    one.developed = kind == Kind::developed;
    return one;
}

Stem* partner(Stems& stems, const std::string& text, Kind kind) {
    return stems.partner(text, kind, 0, Time::min());
}

TEST(StemsTest, TheOtherHalfHasTheSameStemAndAnotherKind) {
    Stems stems;
    stems.remember(stem("DSC00001", Kind::raw));
    EXPECT_NE(partner(stems, "DSC00001", Kind::developed), nullptr);
    EXPECT_NE(partner(stems, "dsc00001", Kind::developed), nullptr);
    EXPECT_EQ(partner(stems, "DSC00001", Kind::raw), nullptr);
    EXPECT_EQ(partner(stems, "DSC00001", Kind::other), nullptr);
    EXPECT_EQ(partner(stems, "DSC00002", Kind::developed), nullptr);
}

TEST(StemsTest, WhatWasNotToBeAPairHasNoOtherHalf) {
    Stems stems;
    stems.remember(stem("DSC00001", Kind::developed, false));
    EXPECT_EQ(partner(stems, "DSC00001", Kind::raw), nullptr);
}

TEST(StemsTest, AFullPairHasNoThirdHalf) {
    Stems stems;
    stems.remember(stem("DSC00001", Kind::raw));
    partner(stems, "DSC00001", Kind::developed)->developed = true;
    EXPECT_EQ(partner(stems, "DSC00001", Kind::developed), nullptr);
    EXPECT_EQ(partner(stems, "DSC00001", Kind::raw), nullptr);
}

TEST(StemsTest, WhenTheCounterWasSetBackTheLatestOfTheNameCounts) {
    Stems stems;
    stems.remember(stem("DSC00001", Kind::raw));
    stems.remember(stem("DSC00001", Kind::developed));
    EXPECT_EQ(partner(stems, "DSC00001", Kind::developed), nullptr);
}

TEST(StemsTest, OfAnotherSessionTheSameNameIsAnotherPicture) {
    Stems stems;
    stems.remember(stem("DSC00001", Kind::raw));
    Stem next = stem("DSC00001", Kind::raw);
    next.session = 1;
    next.pair = "next";
    stems.remember(next);
    stems.remember(stem("DSC00001", Kind::developed));
    ASSERT_NE(stems.partner("DSC00001", Kind::developed, 1, Time::min()), nullptr);
    EXPECT_EQ(stems.partner("DSC00001", Kind::developed, 1, Time::min())->pair, "next");
    EXPECT_EQ(stems.partner("DSC00001", Kind::developed, 2, Time::min()), nullptr);
}

TEST(StemsTest, NoMoreThan256AreRemembered) {
    Stems stems;
    stems.remember(stem("first", Kind::raw));
    for (int count = 0; count < 256; ++count) {
        stems.remember(stem("DSC" + std::to_string(count), Kind::raw));
    }
    EXPECT_EQ(partner(stems, "first", Kind::developed), nullptr);
    EXPECT_NE(partner(stems, "DSC0", Kind::developed), nullptr);
}

}  // namespace
}  // namespace host::brain
