#include "tether/rpc/outgoing.h"

#include <gtest/gtest.h>

namespace rpc {
namespace {

// Small, so that little is much.
constexpr OutgoingLimits small{100, 50, 20};

// Everything that waits, as the client will read it.
std::string read_all(Outgoing& outgoing) {
    std::string bytes;
    while (true) {
        const Outgoing::Batch batch = outgoing.take();
        if (batch.bytes.empty()) {
            return bytes;
        }
        bytes += batch.bytes;
        outgoing.written(batch);
    }
}

void fill(Outgoing& outgoing, std::size_t bytes) {
    outgoing.add_answer(std::string(bytes - 1, '.'));
}

std::function<std::string(std::uint64_t)> line(const std::string& text) {
    return [text](std::uint64_t dropped) {
        return text + " " + std::to_string(dropped);
    };
}

TEST(Outgoing, KeepsTheOrder) {
    Outgoing outgoing;
    outgoing.add_state("state");
    outgoing.add_answer("answer");
    EXPECT_TRUE(outgoing.add_picture("picture", "p1"));
    EXPECT_TRUE(outgoing.add_news("shot"));
    outgoing.add_line(line("line"));
    EXPECT_EQ(read_all(outgoing), "state\nanswer\npicture\nshot\nline 0\n");
    EXPECT_EQ(outgoing.bytes(), 0U);
}

TEST(Outgoing, SaysWhichPicturesWentWithABatch) {
    Outgoing outgoing;
    outgoing.add_picture("one", "p1");
    outgoing.add_answer("answer");
    outgoing.add_picture("two", "p2");
    EXPECT_EQ(outgoing.take().pictures, (std::vector<std::string>{"p1", "p2"}));
    EXPECT_EQ(outgoing.take().pictures, std::vector<std::string>{});
}

TEST(Outgoing, WhatIsBeingWrittenStillCounts) {
    Outgoing outgoing(small);
    fill(outgoing, 100);
    EXPECT_TRUE(outgoing.is_full());
    const Outgoing::Batch batch = outgoing.take();
    EXPECT_TRUE(outgoing.is_full());
    outgoing.written(batch);
    EXPECT_FALSE(outgoing.is_full());
}

TEST(Outgoing, EveryStateIsToldToAClientThatReads) {
    Outgoing outgoing;
    outgoing.add_state("idle");
    outgoing.add_state("opening");
    EXPECT_EQ(read_all(outgoing), "idle\nopening\n");
}

TEST(Outgoing, StatesAreMergedWhenMuchWaits) {
    Outgoing outgoing(small);
    fill(outgoing, 20);
    outgoing.add_state("idle");
    outgoing.add_answer("answer");
    outgoing.add_state("opening");
    outgoing.add_state("ready");
    // In the older one's place: an answer never comes before the state that it follows from.
    EXPECT_EQ(read_all(outgoing), std::string(19, '.') + "\nready\nanswer\n");
    EXPECT_EQ(outgoing.bytes(), 0U);
}

TEST(Outgoing, AStateThatIsBeingWrittenIsNotTouched) {
    Outgoing outgoing(small);
    fill(outgoing, 20);
    outgoing.add_state("idle");
    const Outgoing::Batch batch = outgoing.take();
    outgoing.add_state("ready");
    EXPECT_EQ(batch.bytes, std::string(19, '.') + "\nidle\n");
    outgoing.written(batch);
    EXPECT_EQ(read_all(outgoing), "ready\n");
}

TEST(Outgoing, AThousandStatesAreAsMuchAsOne) {
    Outgoing outgoing(small);
    fill(outgoing, 20);
    for (int i = 0; i < 1000; ++i) {
        outgoing.add_state("state " + std::to_string(i));
    }
    EXPECT_EQ(outgoing.bytes(), 20 + std::string("state 999\n").size());
}

TEST(Outgoing, DroppedLinesAreCounted) {
    Outgoing outgoing(small);
    fill(outgoing, 50);
    for (int i = 0; i < 7; ++i) {
        outgoing.add_line(line("lost"));
    }
    EXPECT_EQ(read_all(outgoing), std::string(49, '.') + "\n");
    outgoing.add_line(line("a"));
    outgoing.add_line(line("b"));
    EXPECT_EQ(read_all(outgoing), "a 7\nb 0\n");
}

TEST(Outgoing, AFullOneTakesOnlyAnswersAndTheState) {
    Outgoing outgoing(small);
    fill(outgoing, 99);
    EXPECT_TRUE(outgoing.add_picture("last", "p1"));
    EXPECT_FALSE(outgoing.add_picture("lost", "p2"));
    EXPECT_FALSE(outgoing.add_news("lost"));
    outgoing.add_answer("answer");
    outgoing.add_state("state");
    EXPECT_EQ(read_all(outgoing), std::string(98, '.') + "\nlast\nanswer\nstate\n");
    EXPECT_TRUE(outgoing.add_picture("again", "p2"));
}

TEST(Outgoing, MuchIsTakenInParts) {
    Outgoing outgoing;
    for (int i = 0; i < 40; ++i) {
        fill(outgoing, 10000);
    }
    const Outgoing::Batch batch = outgoing.take();
    EXPECT_EQ(batch.bytes.size(), 70000U);
    outgoing.written(batch);
    EXPECT_EQ(outgoing.bytes(), 330000U);
}

}  // namespace
}  // namespace rpc
