#include "tether/console/http/access.h"

#include <gtest/gtest.h>
#include <string>

namespace console {
namespace {

constexpr unsigned int port = 8123;

std::string token_of(const Access& access) {
    return access.address().substr(access.address().find('=') + 1);
}

// What a browser sends from the page.
Head get(const Access& access) {
    Head head;
    head.method = "GET";
    head.target = "/";
    head.headers["host"] = "127.0.0.1:8123";
    head.headers["cookie"] = "tether-8123=" + token_of(access);
    return head;
}

Head post(const Access& access) {
    Head head = get(access);
    head.method = "POST";
    head.target = "/rpc";
    head.headers["origin"] = "http://127.0.0.1:8123";
    head.headers["content-type"] = "application/json";
    return head;
}

int status(const Access& access, const Head& head) {
    const auto refusal = access.refuses(head);
    return refusal ? refusal->status : 0;
}

TEST(Access, IsAnAddressWith128DrawnBits) {
    const Access access(port);
    EXPECT_EQ(access.address(), "http://127.0.0.1:8123/?token=" + token_of(access));
    EXPECT_EQ(token_of(access).size(), 32U);
    EXPECT_EQ(token_of(access).find_first_not_of("0123456789abcdef"), std::string::npos);
    EXPECT_NE(token_of(access), token_of(Access(port)));
    EXPECT_EQ(access.cookie(),
              "tether-8123=" + token_of(access) + "; Path=/; HttpOnly; SameSite=Strict");
}

TEST(Access, HasWhoKnowsTheToken) {
    const Access access(port);
    Head head = get(access);
    EXPECT_EQ(status(access, head), 0);
    head.headers["cookie"] = "a=b; tether-8123=" + token_of(access) + "; c=d";
    EXPECT_EQ(status(access, head), 0);
    head.headers.erase("cookie");
    EXPECT_EQ(status(access, head), 403);
    head.target = "/?a=b&token=" + token_of(access);
    EXPECT_EQ(status(access, head), 0);
}

TEST(Access, HasNobodyWithAnotherToken) {
    const Access access(port);
    const std::string token = token_of(access);
    std::string other = token;
    other.back() = other.back() == '0' ? '1' : '0';
    for (const std::string& wrong : {other, std::string(), token.substr(1), token + "0",
                                     "0" + token, token + token, std::string("%00") + token}) {
        Head head = get(access);
        head.headers["cookie"] = "tether-8123=" + wrong;
        EXPECT_EQ(status(access, head), 403) << wrong;
        head.headers.erase("cookie");
        head.target = "/?token=" + wrong;
        EXPECT_EQ(status(access, head), 403) << wrong;
    }
    Head head = get(access);
    head.headers["cookie"] = "tether-8124=" + token;
    EXPECT_EQ(status(access, head), 403);
}

TEST(Access, IsForItsOwnHostOnly) {
    const Access access(port);
    for (const std::string host :
         {"", "localhost:8123", "127.0.0.1", "127.0.0.1:8124", "evil.example:8123", "[::1]:8123",
          "127.0.0.1:8123.evil.example", "0.0.0.0:8123", "127.0.0.1:08123"}) {
        Head head = get(access);
        head.headers["host"] = host;
        EXPECT_EQ(status(access, head), 403) << host;
    }
    Head without = get(access);
    without.headers.erase("host");
    EXPECT_EQ(status(access, without), 403);
}

TEST(Access, AtTheUsualPortBrowsersDoNotNameIt) {
    const Access access(80);
    Head head = get(access);
    head.headers["host"] = "127.0.0.1";
    head.headers["cookie"] = "tether-80=" + token_of(access);
    EXPECT_EQ(status(access, head), 0);
}

TEST(Access, ChangesNeedTheirOwnOrigin) {
    const Access access(port);
    EXPECT_EQ(status(access, post(access)), 0);
    for (const std::string origin : {"", "null", "http://evil.example", "https://127.0.0.1:8123",
                                     "http://127.0.0.1:8124", "http://127.0.0.1:8123/"}) {
        Head head = post(access);
        head.headers["origin"] = origin;
        EXPECT_EQ(status(access, head), 403) << origin;
        head = get(access);
        head.headers["origin"] = origin;
        EXPECT_EQ(status(access, head), 403) << origin;
    }
    Head without = post(access);
    without.headers.erase("origin");
    EXPECT_EQ(status(access, without), 403);
}

TEST(Access, PagesFromElsewhereMayNotEvenLook) {
    const Access access(port);
    for (const std::string site : {"cross-site", "same-site", "else"}) {
        Head head = get(access);
        head.headers["sec-fetch-site"] = site;
        EXPECT_EQ(status(access, head), 403) << site;
        head.headers["sec-fetch-mode"] = "navigate";
        EXPECT_EQ(status(access, head), 403) << site;
        // The user has followed a link that only somebody with the token can have written.
        head.target = "/?token=" + token_of(access);
        EXPECT_EQ(status(access, head), 0) << site;
    }
    for (const std::string site : {"same-origin", "none"}) {
        Head head = get(access);
        head.headers["sec-fetch-site"] = site;
        EXPECT_EQ(status(access, head), 0) << site;
    }
}

TEST(Access, OnceIsForOneRequest) {
    const Access access(port);
    const std::string once = access.address_for_once();
    EXPECT_EQ(once.substr(0, 28), "http://127.0.0.1:8123/?once=");
    Head head = get(access);
    head.headers.erase("cookie");
    head.target = once.substr(once.find("/?"));
    Head foreign = head;
    foreign.headers["host"] = "evil.example";
    EXPECT_EQ(status(access, foreign), 403);
    EXPECT_EQ(status(access, head), 0) << "what was refused has not used it up";
    EXPECT_EQ(status(access, head), 403);
    EXPECT_EQ(status(access, get(access)), 0);
}

// What a form of another page can send without asking.
TEST(Access, BodiesAreJsonOnly) {
    const Access access(port);
    for (const std::string type : {"", "text/plain", "application/x-www-form-urlencoded",
                                   "multipart/form-data; boundary=x", "application/jsonx"}) {
        Head head = post(access);
        head.headers["content-type"] = type;
        EXPECT_EQ(status(access, head), 415) << type;
    }
    Head head = post(access);
    head.headers["content-type"] = "application/json; charset=utf-8";
    EXPECT_EQ(status(access, head), 0);
}

}  // namespace
}  // namespace console
