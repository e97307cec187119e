// A text that one thread changes while others read it.

#include "threads/published_string.h"

#include <array>
#include <atomic>
#include <gtest/gtest.h>
#include <string>
#include <thread>

namespace {

TEST(PublishedString, IsEmptyUntilPublished) {
    const PublishedString text;
    EXPECT_EQ(text.get(), "");
}

TEST(PublishedString, GivesTheLatestText) {
    main_thread.assume();
    PublishedString text;
    for (const char* const folder : {"/a", "/b", "", "/a"}) {
        text.publish(folder);
        EXPECT_EQ(text.get(), folder);
    }
}

TEST(PublishedString, KeepsWhatAReaderHolds) {
    main_thread.assume();
    PublishedString text;
    text.publish("a folder whose name is too long to be stored inside the string object itself");
    const std::string& held = text.get();
    for (int number = 0; number < 1000; ++number) {
        text.publish("folder " + std::to_string(number));
    }
    EXPECT_EQ(held, "a folder whose name is too long to be stored inside the string object itself");
}

// A host may send the same folder with every connection.
TEST(PublishedString, KeepsOneCopyOfATextThatStays) {
    main_thread.assume();
    PublishedString text;
    text.publish("/a");
    const std::string* const first = &text.get();
    text.publish("/a");
    EXPECT_EQ(&text.get(), first);
}

TEST(PublishedString, ReadersNeverSeeAHalfWrittenText) {
    main_thread.assume();
    constexpr int texts = 20000;
    PublishedString text;
    std::atomic<int> torn{0};
    std::atomic<bool> done{false};
    std::array<std::thread, 3> readers;
    for (std::thread& reader : readers) {
        reader = std::thread([&] {
            while (!done) {
                const std::string& seen = text.get();
                if (seen.find_first_not_of(seen.empty() ? 'a' : seen.front()) !=
                    std::string::npos) {
                    ++torn;
                }
            }
        });
    }
    for (int number = 0; number < texts; ++number) {
        text.publish(std::string(static_cast<std::size_t>(number % 64),
                                 static_cast<char>('a' + number % 26)));
    }
    done = true;
    for (std::thread& reader : readers) {
        reader.join();
    }
    EXPECT_EQ(torn, 0);
}

}  // namespace
