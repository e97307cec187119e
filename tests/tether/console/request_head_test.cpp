#include "tether/console/http/request_head.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace console {
namespace {

// Lines with their ends, and the empty one.
std::string head_of(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += line + "\r\n";
    }
    return text + "\r\n";
}

// The status that it is refused with; 0 when it is taken.
int status_of(const std::vector<std::string>& lines) {
    const auto read = read_head(head_of(lines));
    const auto* refusal = std::get_if<Refusal>(&read);
    return refusal != nullptr ? refusal->status : 0;
}

Head taken(const std::vector<std::string>& lines) {
    auto read = read_head(head_of(lines));
    EXPECT_TRUE(std::holds_alternative<Head>(read)) << std::get<Refusal>(read).sentence;
    return std::get<Head>(std::move(read));
}

TEST(RequestHead, IsReadAsABrowserWritesIt) {
    const Head head = taken({"POST /rpc?token=abc&lines=1 HTTP/1.1", "Host: 127.0.0.1:80",
                             "COOKIE:  a=\xC3\xA4; b=c \t", "Content-Length: 12"});
    EXPECT_EQ(head.method, "POST");
    EXPECT_EQ(head.target, "/rpc?token=abc&lines=1");
    EXPECT_EQ(head.header("host"), "127.0.0.1:80");
    EXPECT_EQ(head.header("cookie"), "a=\xC3\xA4; b=c");
    EXPECT_EQ(head.header("origin"), "");
    EXPECT_EQ(head.parameter("token"), "abc");
    EXPECT_EQ(head.parameter("lines"), "1");
    EXPECT_EQ(head.parameter("line"), "");
    EXPECT_EQ(head.body, 12U);
    EXPECT_FALSE(head.last);
}

TEST(RequestHead, IsCompleteWithItsEmptyLine) {
    EXPECT_EQ(length_of_head("GET / HTTP/1.1\r\n\r"), std::nullopt);
    EXPECT_EQ(length_of_head("GET / HTTP/1.1\r\n\r\nmore"), 18U);
    EXPECT_EQ(length_of_head(""), std::nullopt);
}

TEST(RequestHead, SaysWhenTheConnectionEndsBehindIt) {
    EXPECT_TRUE(taken({"GET / HTTP/1.0"}).last);
    EXPECT_TRUE(taken({"GET / HTTP/1.1", "Connection: Close"}).last);
    EXPECT_FALSE(taken({"GET / HTTP/1.1", "Connection: keep-alive"}).last);
}

TEST(RequestHead, OfAnotherShapeIsRefused) {
    const std::vector<std::vector<std::string>> wrong{
        {""},
        {"GET"},
        {"GET /"},
        {"GET HTTP/1.1"},
        {"GET  HTTP/1.1"},
        {"GET / HTTP/2.0"},
        {"GET / http/1.1"},
        {"GET / HTTP/1.1 "},
        {"GET index.html HTTP/1.1"},
        {"GET http://127.0.0.1/ HTTP/1.1"},
        {"GET * HTTP/1.1"},
        {"GET /a b HTTP/1.1"},
        {"GET /\x01 HTTP/1.1"},
        {"GET /\xC3\xA4 HTTP/1.1"},
        {"G(T / HTTP/1.1"},
        {" GET / HTTP/1.1"},
    };
    for (const auto& lines : wrong) {
        EXPECT_EQ(status_of(lines), 400) << lines.front();
    }
}

TEST(RequestHead, WithAHeaderOfAnotherShapeIsRefused) {
    for (const std::string line : {"no colon", ": no name", "Host : blank before the colon",
                                   " Host: folded", "\tHost: folded", "Na me: two words",
                                   "Name: \x01", "Name: a\rb", "Name: a\nb", "Name: \x7F"}) {
        EXPECT_EQ(status_of({"GET / HTTP/1.1", "Accept: */*", line}), 400) << line;
    }
    EXPECT_EQ(status_of({"GET / HTTP/1.1", "Name:"}), 0);
}

TEST(RequestHead, WithTwoHeadersOfOneNameIsRefused) {
    for (const std::string name : {"Host", "Cookie", "Origin", "Content-Length"}) {
        EXPECT_EQ(status_of({"POST / HTTP/1.1", name + ": 1", "X: y", name + ": 1"}), 400);
        EXPECT_EQ(status_of({"POST / HTTP/1.1", "content-length: 1", "CONTENT-LENGTH: 1"}), 400);
    }
}

TEST(RequestHead, WithMethodsThatNobodyNeedsIsRefused) {
    for (const std::string method :
         {"OPTIONS", "PUT", "DELETE", "PATCH", "TRACE", "CONNECT", "PRI", "get", "X"}) {
        EXPECT_EQ(status_of({method + " / HTTP/1.1"}), 405) << method;
    }
    EXPECT_EQ(status_of({"HEAD / HTTP/1.1"}), 0);
}

TEST(RequestHead, ThatIsTooLongIsRefused) {
    EXPECT_EQ(status_of({"GET /" + std::string(longest_target - 1, 'a') + " HTTP/1.1"}), 0);
    EXPECT_EQ(status_of({"GET /" + std::string(longest_target, 'a') + " HTTP/1.1"}), 414);
    std::vector<std::string> lines{"GET / HTTP/1.1"};
    for (std::size_t count = 0; count < most_headers; ++count) {
        lines.push_back("X-" + std::to_string(count) + ": 1");
    }
    EXPECT_EQ(status_of(lines), 0);
    lines.emplace_back("Y: 1");
    EXPECT_EQ(status_of(lines), 431);
}

TEST(RequestHead, SaysInOneWayWhereItsBodyEnds) {
    const auto post = [](std::vector<std::string> headers) {
        headers.insert(headers.begin(), "POST /rpc HTTP/1.1");
        return status_of(headers);
    };
    EXPECT_EQ(post({"Content-Length: 0"}), 0);
    EXPECT_EQ(post({"Content-Length: 1048576"}), 0);
    EXPECT_EQ(post({"Content-Length: 1048577"}), 413);
    EXPECT_EQ(post({"Content-Length: 18446744073709551616"}), 413);
    EXPECT_EQ(post({"Content-Length: 99999999999999999999999999"}), 413);
    for (const std::string length :
         {"", "-1", "+1", "0x10", "1,1", "1 1", "1;1", "one", "%31", "1e3", "1."}) {
        EXPECT_EQ(post({"Content-Length: " + length}), 400) << length;
    }
    EXPECT_EQ(post({}), 411);
    EXPECT_EQ(post({"Transfer-Encoding: chunked"}), 411);
    EXPECT_EQ(post({"Transfer-Encoding: identity"}), 411);
    EXPECT_EQ(post({"Content-Length: 3", "Transfer-Encoding: chunked"}), 400);
    EXPECT_EQ(post({"Transfer-Encoding: chunked", "Content-Length: 3"}), 400);
    EXPECT_EQ(post({"Content-Length: 3", "Expect: 100-continue"}), 417);
    EXPECT_EQ(post({"Content-Length: 3", "Content-Encoding: gzip"}), 415);
    EXPECT_EQ(status_of({"GET / HTTP/1.1", "Content-Length: 3"}), 400);
    EXPECT_EQ(status_of({"GET / HTTP/1.1", "Content-Length: 0"}), 0);
    EXPECT_EQ(status_of({"GET / HTTP/1.1", "Transfer-Encoding: chunked"}), 411);
}

}  // namespace
}  // namespace console
