#include "tether/rpc/messages.h"

#include <gtest/gtest.h>

namespace rpc {
namespace {

std::vector<std::string> all_of(Messages& messages) {
    std::vector<std::string> texts;
    while (const auto message = messages.next()) {
        texts.push_back(message->too_long ? "(too long)" : message->text);
    }
    return texts;
}

using Texts = std::vector<std::string>;

TEST(Messages, EachLineIsOne) {
    Messages messages;
    messages.add("one\ntwo\n\nfour\n");
    EXPECT_EQ(all_of(messages), (Texts{"one", "two", "", "four"}));
}

TEST(Messages, AreTheSameHoweverTheyCome) {
    const std::string bytes = "one\ntwo\n\nfour\nthe rest";
    for (std::size_t at_once = 1; at_once <= bytes.size(); ++at_once) {
        Messages messages;
        Texts texts;
        for (std::size_t at = 0; at < bytes.size(); at += at_once) {
            messages.add(bytes.substr(at, at_once));
            for (const std::string& text : all_of(messages)) {
                texts.push_back(text);
            }
        }
        EXPECT_EQ(texts, (Texts{"one", "two", "", "four"})) << at_once;
        messages.finish();
        EXPECT_EQ(all_of(messages), (Texts{"the rest"})) << at_once;
    }
}

TEST(Messages, TheEndAddsNoEmptyOne) {
    Messages messages;
    messages.add("one\n");
    messages.finish();
    EXPECT_EQ(all_of(messages), (Texts{"one"}));
    EXPECT_EQ(all_of(messages), Texts{});
}

TEST(Messages, OneOfAMebibyteIsTaken) {
    Messages messages;
    messages.add(std::string(longest_message, 'a') + "\n");
    const auto message = messages.next();
    ASSERT_TRUE(message);
    EXPECT_FALSE(message->too_long);
    EXPECT_EQ(message->text.size(), std::size_t{1048576});
}

TEST(Messages, OneByteMoreIsTooLongAndTheNextIsTaken) {
    Messages messages;
    messages.add(std::string(longest_message + 1, 'a') + "\nnext\n");
    EXPECT_EQ(all_of(messages), (Texts{"(too long)", "next"}));
}

TEST(Messages, ATooLongOneIsSaidOnceAndBeforeItsEnd) {
    Messages messages;
    const std::string chunk(65536, 'a');
    Texts texts;
    for (int i = 0; i < 100; ++i) {
        messages.add(chunk);
        for (const std::string& text : all_of(messages)) {
            texts.push_back(text + " in chunk " + std::to_string(i));
        }
    }
    EXPECT_EQ(texts, (Texts{"(too long) in chunk 16"}));
    messages.add("aaa\nnext\n");
    EXPECT_EQ(all_of(messages), (Texts{"next"}));
}

TEST(Messages, ATooLongOneThatNeverEndsIsNoneAtTheEnd) {
    Messages messages;
    messages.add(std::string(longest_message + 1, 'a'));
    EXPECT_EQ(all_of(messages), (Texts{"(too long)"}));
    messages.add("more");
    messages.finish();
    EXPECT_EQ(all_of(messages), Texts{});
}

TEST(Messages, ZeroBytesAreKept) {
    Messages messages;
    messages.add(std::string_view("a\0b\n", 4));
    EXPECT_EQ(all_of(messages), (Texts{std::string("a\0b", 3)}));
}

}  // namespace
}  // namespace rpc
