// The queue that everything waits in.
#include "tether/conversation/events.h"

#include <algorithm>
#include <atomic>
#include <gtest/gtest.h>
#include <string>
#include <thread>

namespace {

using host::Clock;
using tether::Event;
using tether::Events;

constexpr std::chrono::seconds patience{30};

Event line(const std::string& text) {
    return {Event::Kind::worker_line, text, Clock::now()};
}

TEST(Events, ComeInTheirOrder) {
    Events events;
    events.post_line(line("one"));
    events.post({Event::Kind::interrupted, {}, Clock::now()});
    events.post_line(line("two"));
    EXPECT_EQ(events.next(Clock::now())->text, "one");
    EXPECT_EQ(events.next(Clock::now())->kind, Event::Kind::interrupted);
    EXPECT_EQ(events.next(Clock::now())->text, "two");
    EXPECT_FALSE(events.next(Clock::now()));
}

TEST(Events, LinesWaitForRoomAndNoneIsLost) {
    for (const std::size_t length : {std::size_t{0}, std::size_t{60'000}}) {
        Events events;
        std::atomic<int> posted{0};
        constexpr int lines = 5000;
        std::thread poster([&] {
            for (int number = 0; number < lines; ++number) {
                events.post_line(line(std::to_string(number) + " " + std::string(length, 'x')));
                ++posted;
            }
        });
        std::size_t most_bytes = 0;
        for (int number = 0; number < lines; ++number) {
            const auto event = events.next(host::after(patience));
            ASSERT_TRUE(event);
            ASSERT_EQ(event->text.substr(0, event->text.find(' ')), std::to_string(number));
            const auto waiting = static_cast<std::size_t>(posted.load() - number);
            ASSERT_LE(waiting, 1025u);
            most_bytes = std::max(most_bytes, waiting * length);
        }
        EXPECT_LT(most_bytes, 2u << 20);
        poster.join();
    }
}

TEST(Events, WhatIsRareIsNotHeldUp) {
    Events events;
    std::thread poster([&] {
        for (int number = 0; number < 3000; ++number) {
            events.post_line(line("y"));
        }
    });
    for (int number = 0; number < 2000; ++number) {
        events.post({Event::Kind::interrupted, {}, Clock::now()});
    }
    int lines = 0;
    int others = 0;
    while (lines + others < 5000) {
        const auto event = events.next(host::after(patience));
        ASSERT_TRUE(event);
        ++(event->kind == Event::Kind::worker_line ? lines : others);
    }
    EXPECT_EQ(others, 2000);
    poster.join();
}

}  // namespace
