#include "tether/rpc/parameters.h"

#include <gtest/gtest.h>

#include "tether/serve/methods.h"

namespace rpc {
namespace {

// What is wrong with parameters of one of serve's methods; "" when nothing is.
std::string wrong(const char* method, const char* parameters) {
    const Method* found = find_method(serve::methods(), method);
    if (found == nullptr) {
        return "no such method";
    }
    return wrong_with(*found, Read::parse(parameters)).value_or("");
}

TEST(Parameters, OfEveryMethodAreTaken) {
    EXPECT_EQ(wrong("initialize", R"({"client":{"name":"a","version":"1"}})"), "");
    EXPECT_EQ(wrong("initialize", R"({"client":{"name":"a","version":"1"},"protocols":[1,2]})"),
              "");
    EXPECT_EQ(wrong("connect", "{}"), "");
    EXPECT_EQ(wrong("disconnect", "{}"), "");
    EXPECT_EQ(wrong("capture", R"({"patience":0.1,"expires":0,"name":"{n:4}","tag":"x"})"), "");
    EXPECT_EQ(wrong("capture", R"({"patience":3600,"expires":3600,"name":"","tag":""})"), "");
    EXPECT_EQ(wrong("capture", "{}"), "");
    EXPECT_EQ(wrong("cancel", R"({"tag":""})"), "");
    EXPECT_EQ(wrong("configure", "{}"), "");
    EXPECT_EQ(wrong("configure",
                    R"({"folder":"/a","saveDestination":"card","fileType":"raw","name":"a"})"),
              "");
    EXPECT_EQ(wrong("state", "{}"), "");
    EXPECT_EQ(wrong("pictures", R"({"after":"id","limit":1000})"), "");
    EXPECT_EQ(wrong("subscribe", R"({"lines":true})"), "");
    EXPECT_EQ(wrong("simulate", R"({"line":"card out"})"), "");
    EXPECT_EQ(wrong("shutdown", R"({"patience":0})"), "");
}

TEST(Parameters, WhatIsWrongIsSaidByItsName) {
    EXPECT_EQ(wrong("capture", R"({"patience":0})"),
              "params.patience: must be a number from 0.1 to 3600");
    EXPECT_EQ(wrong("capture", R"({"patience":3600.5})"),
              "params.patience: must be a number from 0.1 to 3600");
    EXPECT_EQ(wrong("capture", R"({"patience":"20"})"),
              "params.patience: must be a number from 0.1 to 3600");
    EXPECT_EQ(wrong("capture", R"({"patience":null})"),
              "params.patience: must be a number from 0.1 to 3600");
    EXPECT_EQ(wrong("capture", R"({"expires":-1})"),
              "params.expires: must be a number from 0 to 3600");
    EXPECT_EQ(wrong("capture", R"({"tag":7})"),
              "params.tag: must be a text of 0 to 1024 characters, none of them U+0000");
    EXPECT_EQ(wrong("capture", "{\"tag\":\"a\\u0000b\"}"),
              "params.tag: must be a text of 0 to 1024 characters, none of them U+0000");
    EXPECT_EQ(wrong("configure", R"({"folder":""})"),
              "params.folder: must be a text of 1 to 4095 characters, none of them U+0000");
    EXPECT_EQ(wrong("configure", R"({"fileType":"other"})"),
              R"(params.fileType: must be "jpeg", "raw" or "both")");
    EXPECT_EQ(wrong("configure", R"({"saveDestination":"Disk"})"),
              R"(params.saveDestination: must be "disk", "card" or "both")");
    EXPECT_EQ(wrong("pictures", R"({"limit":0})"),
              "params.limit: must be a whole number from 1 to 1000");
    EXPECT_EQ(wrong("pictures", R"({"limit":1.5})"),
              "params.limit: must be a whole number from 1 to 1000");
    EXPECT_EQ(wrong("pictures", R"({"limit":18446744073709551615})"),
              "params.limit: must be a whole number from 1 to 1000");
    EXPECT_EQ(wrong("subscribe", R"({"lines":1})"), "params.lines: must be true or false");
    EXPECT_EQ(wrong("simulate", R"({"line":"a\nb"})"),
              "params.line: must be a text of 1 to 65536 characters on one line, none of them "
              "U+0000");
    EXPECT_EQ(wrong("initialize", R"({"client":[]})"), "params.client: must be an object");
    EXPECT_EQ(wrong("initialize", R"({"client":{"name":1,"version":""}})"),
              "params.client.name: must be a text of 0 to 256 characters, none of them U+0000");
}

TEST(Parameters, UnknownOnesAreRefused) {
    EXPECT_EQ(wrong("state", R"({"x":1})"), "params.x: there is no such parameter");
    EXPECT_EQ(wrong("initialize", R"({"client":{"name":"a","version":"1","os":"b"}})"),
              "params.client.os: there is no such parameter");
    const std::string longest = wrong("state", ("{\"" + std::string(5000, 'x') + "\":1}").c_str());
    EXPECT_LT(longest.size(), 200U);
}

TEST(Parameters, MissingOnesAreNamed) {
    EXPECT_EQ(
        wrong("cancel", "{}"),
        "params.tag: is missing, must be a text of 0 to 1024 characters, none of them U+0000");
    EXPECT_EQ(wrong("subscribe", "{}"), "params.lines: is missing, must be true or false");
    EXPECT_EQ(wrong("initialize", "{}"), "params.client: is missing, must be an object");
    EXPECT_EQ(wrong("initialize", R"({"client":{"name":"a"}})"),
              "params.client.version: is missing, must be a text of 0 to 256 characters, none of "
              "them U+0000");
}

TEST(Parameters, OnlyKnownProtocolsAreSpoken) {
    for (const char* protocols : {"[]", "[2]", "[\"1\"]", "1", "[1.0]", "[1,\"x\"]"}) {
        EXPECT_EQ(
            wrong("initialize", (std::string(R"({"client":{"name":"","version":""},"protocols":)") +
                                 protocols + "}")
                                    .c_str()),
            "params.protocols: must be a list of at most 64 whole numbers, one of them 1")
            << protocols;
    }
}

TEST(Parameters, LengthsCountCharacters) {
    std::string tag;
    for (int i = 0; i < 1024; ++i) {
        tag += "\xC3\xA4";
    }
    EXPECT_EQ(wrong("capture", ("{\"tag\":\"" + tag + "\"}").c_str()), "");
    EXPECT_NE(wrong("capture", ("{\"tag\":\"" + tag + "a\"}").c_str()), "");
}

TEST(Parameters, AnUnknownMethodIsNone) {
    EXPECT_EQ(find_method(serve::methods(), "nope"), nullptr);
    EXPECT_EQ(find_method(serve::methods(), ""), nullptr);
}

}  // namespace
}  // namespace rpc
