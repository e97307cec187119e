// What a value says where nobody has said anything: nothing that could be taken for good news.
#include <gtest/gtest.h>

#include "host/values/file_work.h"
#include "host/values/requests.h"
#include "host/values/session_state.h"
#include "host/values/settings.h"
#include "host/values/shot.h"

namespace host {
namespace {

TEST(DefaultsTest, NothingIsClaimedThatNobodySaid) {
    const Picture picture;
    EXPECT_EQ(picture.bytes, 0u);
    EXPECT_FALSE(picture.whole || picture.recovered || picture.shot);
    const Examined examined;
    EXPECT_EQ(examined.bytes, 0u);
    EXPECT_FALSE(examined.whole);
    const FolderLooked looked;
    EXPECT_FALSE(looked.there || looked.same || looked.writable);
    EXPECT_EQ(looked.room, 0u);
    const SessionState state;
    EXPECT_FALSE(state.simulated);
    EXPECT_EQ(state.restarts, 0u);
    EXPECT_EQ(Ended{}.status, 0);
    EXPECT_EQ(RunBegun{}.process, 0);
    EXPECT_EQ(RunOpened{}.lock_descriptor, -1);
    EXPECT_TRUE(SweepRun{}.over);
}

TEST(DefaultsTest, NumbersThatCountFromOneAreNone) {
    EXPECT_EQ(Shot{}.number, 0u);
    EXPECT_EQ(Place{}.ticket, 0u);
    EXPECT_EQ(FolderLooked{}.ticket, 0u);
}

TEST(DefaultsTest, AreTheWishesOfTheManual) {
    const Wishes wishes;
    EXPECT_EQ(wishes.folder, "shots");
    EXPECT_EQ(wishes.save_destination, SaveDestination::disk);
    EXPECT_EQ(wishes.patience, std::chrono::seconds(20));
    EXPECT_EQ(wishes.expires, std::chrono::seconds(5));
}

}  // namespace
}  // namespace host
