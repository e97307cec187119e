#include "tether/rpc/unanswered.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "host/process/pipe.h"

namespace rpc {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

const Error late{code::problem, "late", {}};

class UnansweredTest : public testing::Test {
  protected:
    UnansweredTest()
        : pipe_(*host::make_pipe()),
          writer_(pipe_.write_end.number(), {[](const std::string&) {},
                                             [] {
                                             }}),
          unanswered_(writer_) {}

    // All that was written so far.
    std::string written() {
        EXPECT_TRUE(writer_.flush(seconds(20)));
        host::make_non_blocking(pipe_.read_end);
        std::string text(65536, '\0');
        const ssize_t count = ::read(pipe_.read_end.number(), text.data(), text.size());
        text.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
        return text;
    }

    host::Pipe pipe_;
    Writer writer_;
    Unanswered unanswered_;
};

TEST_F(UnansweredTest, AnAnswerCarriesTheId) {
    unanswered_.answer(unanswered_.add(Json("abc")), Json{{"a", 1}});
    EXPECT_EQ(written(), "{\"jsonrpc\":\"2.0\",\"id\":\"abc\",\"result\":{\"a\":1}}\n");
}

TEST_F(UnansweredTest, AnErrorHasItsDataOnlyWhenItHasSome) {
    unanswered_.fail(unanswered_.add(Json(1)), {-32602, "bad", {}});
    unanswered_.fail(unanswered_.add(Json()), {-32000, "worse", Json{{"code", "busy"}}});
    EXPECT_EQ(written(),
              "{\"jsonrpc\":\"2.0\",\"id\":1,\"error\":{\"code\":-32602,\"message\":\"bad\"}}\n"
              "{\"jsonrpc\":\"2.0\",\"id\":null,\"error\":{\"code\":-32000,\"message\":\"worse\","
              "\"data\":{\"code\":\"busy\"}}}\n");
}

TEST_F(UnansweredTest, WhatHasNoIdIsDoneAndNotAnswered) {
    unanswered_.answer(unanswered_.add(std::nullopt), Json::object());
    unanswered_.fail(unanswered_.add(std::nullopt), late);
    EXPECT_EQ(written(), "");
    EXPECT_EQ(unanswered_.count(), 0U);
}

TEST_F(UnansweredTest, TheFirstAnswerCounts) {
    const auto token = unanswered_.add(Json(1));
    unanswered_.answer(token, Json("first"));
    unanswered_.answer(token, Json("second"));
    unanswered_.fail(token, late);
    EXPECT_EQ(written(), "{\"jsonrpc\":\"2.0\",\"id\":1,\"result\":\"first\"}\n");
}

TEST_F(UnansweredTest, TheSameIdTwiceIsTwoRequests) {
    const auto one = unanswered_.add(Json(1));
    const auto other = unanswered_.add(Json(1));
    unanswered_.answer(other, Json("other"));
    unanswered_.answer(one, Json("one"));
    EXPECT_EQ(written(),
              "{\"jsonrpc\":\"2.0\",\"id\":1,\"result\":\"other\"}\n"
              "{\"jsonrpc\":\"2.0\",\"id\":1,\"result\":\"one\"}\n");
}

TEST_F(UnansweredTest, WhatIsLateFailsAndIsNotAnsweredAgain) {
    const auto now = host::Clock::now();
    const auto token = unanswered_.add(Json(1));
    EXPECT_EQ(unanswered_.next_deadline(), host::TimePoint::max());
    unanswered_.limit(token, now + milliseconds(900), late);
    EXPECT_EQ(unanswered_.next_deadline(), now + milliseconds(900));
    unanswered_.strike(now + milliseconds(899));
    EXPECT_EQ(unanswered_.count(), 1U);
    unanswered_.strike(now + milliseconds(900));
    unanswered_.answer(token, Json("too late"));
    EXPECT_EQ(written(),
              "{\"jsonrpc\":\"2.0\",\"id\":1,\"error\":{\"code\":-32000,\"message\":\"late\"}}\n");
    EXPECT_EQ(unanswered_.next_deadline(), host::TimePoint::max());
}

TEST_F(UnansweredTest, AllThatIsLeftCanFailButSome) {
    unanswered_.add(Json("a"));
    const auto kept = unanswered_.add(Json("b"));
    unanswered_.add(std::nullopt);
    unanswered_.fail_all_but({kept}, late);
    EXPECT_EQ(unanswered_.count(), 1U);
    unanswered_.answer(kept, Json("last"));
    EXPECT_EQ(
        written(),
        "{\"jsonrpc\":\"2.0\",\"id\":\"a\",\"error\":{\"code\":-32000,\"message\":\"late\"}}\n"
        "{\"jsonrpc\":\"2.0\",\"id\":\"b\",\"result\":\"last\"}\n");
}

// The camera answers on its thread while the reader's strikes.
TEST_F(UnansweredTest, TwoThreadsThatAnswerTheSameGiveOneAnswer) {
    constexpr int count = 200;
    std::vector<Unanswered::Token> tokens;
    for (int i = 0; i < count; ++i) {
        tokens.push_back(unanswered_.add(Json(i)));
        unanswered_.limit(tokens.back(), host::TimePoint{}, late);
    }
    std::thread camera([&] {
        for (const auto token : tokens) {
            unanswered_.answer(token, Json(true));
        }
    });
    unanswered_.strike(host::Clock::now());
    camera.join();
    const std::string text = written();
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), count);
    for (int i = 0; i < count; ++i) {
        EXPECT_NE(text.find("\"id\":" + std::to_string(i) + ","), std::string::npos);
    }
}

TEST(AnswerText, ATextThatIsNoUtf8IsWrittenAllTheSame) {
    EXPECT_EQ(result_text(Json(1), Json("a\xFF")),
              "{\"jsonrpc\":\"2.0\",\"id\":1,\"result\":\"a\xEF\xBF\xBD\"}");
}

}  // namespace
}  // namespace rpc
