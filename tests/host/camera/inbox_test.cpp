// What other threads leave for the camera's own.
#include "host/camera/inbox.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <poll.h>
#include <system_error>

#include "host/camera/disk.h"
#include "tests/host/open_descriptors.h"

namespace host {
namespace {

bool wakes(const Inbox& inbox) {
    pollfd source{inbox.descriptor(), POLLIN, 0};
    return poll(&source, 1, 0) == 1;
}

TEST(InboxTest, WakesOnceForAllThatHasBeenPosted) {
    Inbox inbox;
    for (int round = 0; round < 3; ++round) {
        EXPECT_FALSE(wakes(inbox));
        EXPECT_TRUE(inbox.take().empty());
        errno = EINTR;  // of an earlier call
        inbox.post(Told{"one"});
        inbox.post(Told{"two"});
        inbox.post(Leave{});
        EXPECT_TRUE(wakes(inbox));
        const std::vector<Message> messages = inbox.take();
        ASSERT_EQ(messages.size(), 3u);
        EXPECT_EQ(std::get<Told>(messages[0]).id, "one");
        EXPECT_EQ(std::get<Told>(messages[1]).id, "two");
        EXPECT_TRUE(std::holds_alternative<Leave>(messages[2]));
    }
}

TEST(InboxTest, AMessageSaysNothingThatNobodyPutThere) {
    EXPECT_EQ(ListAsked{}.limit, 0u);
    EXPECT_EQ(Listed{}.number, 0u);
    EXPECT_EQ(ChildEnded{}.status, 0);
    EXPECT_EQ(ListWork{}.number, 0u);
    EXPECT_EQ(ListWork{}.limit, 0u);
}

TEST(InboxTest, IsNotMadeWithoutDescriptors) {
    for (const int left : {0, 1}) {
        std::string why;
        try {
            const DescriptorsLeft few(left);
            const Inbox inbox;
        } catch (const std::system_error& error) {
            why = error.what();
        }
        EXPECT_EQ(why, "cannot make a pipe: Too many open files") << left;
    }
}

}  // namespace
}  // namespace host
