#include "tether/rpc/request.h"

#include <gtest/gtest.h>

namespace rpc {
namespace {

Request taken(std::string_view text) {
    const auto read = read_request(text);
    if (const auto* refusal = std::get_if<Refusal>(&read)) {
        ADD_FAILURE() << text << ": " << refusal->error.message;
        return {};
    }
    return std::get<Request>(read);
}

Refusal refused(std::string_view text) {
    const auto read = read_request(text);
    if (std::holds_alternative<Request>(read)) {
        ADD_FAILURE() << "taken: " << text;
        return {};
    }
    return std::get<Refusal>(read);
}

TEST(Request, IsReadWithItsParameters) {
    const Request request =
        taken(R"({"jsonrpc":"2.0","id":7,"method":"capture","params":{"tag":"a"}})");
    EXPECT_EQ(request.method, "capture");
    EXPECT_EQ(*request.id, 7);
    EXPECT_EQ(request.parameters.dump(), R"({"tag":"a"})");
}

TEST(Request, WithoutParametersHasNone) {
    EXPECT_EQ(taken(R"({"jsonrpc":"2.0","id":1,"method":"state"})").parameters.dump(), "{}");
}

TEST(Request, KeepsEveryKindOfId) {
    for (const char* id : {"1", "-5", "18446744073709551615", "\"abc\"", "\"\"", "null", "1.5"}) {
        const Request request =
            taken(std::string(R"({"jsonrpc":"2.0","method":"m","id":)") + id + "}");
        ASSERT_TRUE(request.id) << id;
        EXPECT_EQ(request.id->dump(), id);
    }
}

// Read as a number of the machine, it would come back as another one.
TEST(Request, AnIdOfMoreThan64BitsIsRefused) {
    for (const char* id : {"18446744073709551616", "-9223372036854775809", "1e19",
                           "123456789012345678901234567890"}) {
        const auto read =
            read_request(std::string(R"({"jsonrpc":"2.0","method":"state","id":)") + id + "}");
        const auto* refusal = std::get_if<Refusal>(&read);
        ASSERT_NE(refusal, nullptr) << id;
        EXPECT_EQ(refusal->id, Json()) << id;
        EXPECT_EQ(refusal->error.code, code::invalid_request) << id;
    }
}

TEST(Request, WithoutIdIsOneThatIsNotAnswered) {
    EXPECT_FALSE(taken(R"({"jsonrpc":"2.0","method":"state"})").id);
    // Nor is what is wrong with it said.
    EXPECT_FALSE(refused(R"({"jsonrpc":"2.0","method":"state","params":[]})").id);
}

TEST(Request, ToleratesOtherMembers) {
    EXPECT_EQ(taken(R"({"jsonrpc":"2.0","id":1,"method":"m","trace":{"a":1}})").method, "m");
}

struct Bad {
    const char* text;
    int code;
    const char* id;
};

class Refused : public testing::TestWithParam<Bad> {};

TEST_P(Refused, WithTheStandardsCode) {
    const Refusal refusal = refused(GetParam().text);
    EXPECT_EQ(refusal.error.code, GetParam().code) << GetParam().text;
    ASSERT_TRUE(refusal.id);
    EXPECT_EQ(refusal.id->dump(), GetParam().id);
    EXPECT_FALSE(refusal.error.message.empty());
}

INSTANTIATE_TEST_SUITE_P(
    All, Refused,
    testing::Values(Bad{"", -32700, "null"}, Bad{"{", -32700, "null"},
                    Bad{"nonsense", -32700, "null"},
                    Bad{"{\"jsonrpc\":\"2.0\",\"id\":1,\"method\":\"\xff\"}", -32700, "null"},
                    Bad{R"({"jsonrpc":"2.0","id":1,"method":"state"} x)", -32700, "null"},
                    Bad{"[]", -32600, "null"},
                    Bad{R"([{"jsonrpc":"2.0","id":1,"method":"state"}])", -32600, "null"},
                    Bad{"1", -32600, "null"}, Bad{"null", -32600, "null"},
                    Bad{"\"text\"", -32600, "null"}, Bad{"{}", -32600, "null"},
                    Bad{R"({"id":1,"method":"state"})", -32600, "1"},
                    Bad{R"({"jsonrpc":"1.0","id":1,"method":"state"})", -32600, "1"},
                    Bad{R"({"jsonrpc":2.0,"id":1,"method":"state"})", -32600, "1"},
                    Bad{R"({"jsonrpc":"2.0","id":1})", -32600, "1"},
                    Bad{R"({"jsonrpc":"2.0","id":1,"method":5})", -32600, "1"},
                    Bad{R"({"jsonrpc":"2.0","id":1,"result":{}})", -32600, "1"},
                    Bad{R"({"jsonrpc":"2.0","id":{},"method":"state"})", -32600, "null"},
                    Bad{R"({"jsonrpc":"2.0","id":[1],"method":"state"})", -32600, "null"},
                    Bad{R"({"jsonrpc":"2.0","id":true,"method":"state"})", -32600, "null"},
                    Bad{R"({"jsonrpc":"2.0","id":1,"method":"state","params":null})", -32600, "1"},
                    Bad{R"({"jsonrpc":"2.0","id":1,"method":"state","params":"a"})", -32600, "1"},
                    Bad{R"({"jsonrpc":"2.0","id":1,"method":"state","params":[]})", -32602, "1"}));

TEST(Request, AMebibyteOfBracketsIsRefused) {
    for (const char bracket : {'[', '{'}) {
        EXPECT_EQ(refused(std::string(1048576, bracket)).error.code, -32600);
    }
    std::string objects;
    while (objects.size() < 1048576) {
        objects += "{\"a\":";
    }
    EXPECT_EQ(refused(objects).error.code, -32600);
}

TEST(Request, BracketsInATextAreNoDepth) {
    const std::string brackets(100, '[');
    EXPECT_EQ(
        taken(R"({"jsonrpc":"2.0","id":1,"method":"m","params":{"tag":"\")" + brackets + "\"}}")
            .parameters["tag"],
        "\"" + brackets);
}

}  // namespace
}  // namespace rpc
