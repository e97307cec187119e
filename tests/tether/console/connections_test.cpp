// Connections by themselves, with limits that are reached soon.
#include "tether/console/http/connections.h"

#include <arpa/inet.h>
#include <atomic>
#include <gtest/gtest.h>
#include <memory>
#include <netinet/in.h>
#include <poll.h>
#include <string>
#include <sys/resource.h>
#include <sys/socket.h>
#include <thread>
#include <time.h>
#include <unistd.h>
#include <vector>

namespace console {
namespace {

using namespace std::chrono_literals;

constexpr std::chrono::seconds patience{60};

class Client {
  public:
    Client() : socket_(::socket(AF_INET, SOCK_STREAM, 0)) {}
    explicit Client(int port) : Client() {
        connect(port);
    }

    void connect(int port) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<std::uint16_t>(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        connected_ = ::connect(socket_.number(), reinterpret_cast<const sockaddr*>(&address),
                               sizeof address) == 0;
    }

    void write(const std::string& text) const {
        ::send(socket_.number(), text.data(), text.size(), MSG_NOSIGNAL);
    }

    // False when it has come to nothing by then.
    bool hears_something_by(host::TimePoint deadline) const {
        pollfd readable{socket_.number(), POLLIN, 0};
        return ::poll(&readable, 1, host::poll_timeout(deadline)) == 1;
    }

    // Up to so many bytes, or to the end of the connection.
    std::string read(std::size_t most = 1'000'000) const {
        std::string text;
        char byte = 0;
        pollfd readable{socket_.number(), POLLIN, 0};
        while (text.size() < most &&
               ::poll(&readable, 1, host::poll_timeout(host::after(patience))) == 1 &&
               ::recv(socket_.number(), &byte, 1, 0) == 1) {
            text += byte;
        }
        return text;
    }

    bool is_connected() const {
        return connected_;
    }

  private:
    host::Descriptor socket_;
    bool connected_ = false;
};

// While it lives, this process has no descriptor left.
class NoDescriptors {
  public:
    NoDescriptors() {
        getrlimit(RLIMIT_NOFILE, &before_);
        rlimit now = before_;
        const host::Descriptor lowest(::dup(STDIN_FILENO));
        now.rlim_cur = static_cast<rlim_t>(lowest.number());
        setrlimit(RLIMIT_NOFILE, &now);
    }
    ~NoDescriptors() {
        setrlimit(RLIMIT_NOFILE, &before_);
    }
    NoDescriptors(const NoDescriptors&) = delete;
    NoDescriptors& operator=(const NoDescriptors&) = delete;

  private:
    rlimit before_{};
};

std::chrono::nanoseconds processor_time() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
}

// Answers each request with its target in brackets.
class ConnectionsTest : public testing::Test {
  protected:
    void start(const Limits& limits) {
        host::Descriptor listening(::socket(AF_INET, SOCK_STREAM, 0));
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        ASSERT_EQ(::bind(listening.number(), reinterpret_cast<const sockaddr*>(&address), length),
                  0);
        ASSERT_EQ(::listen(listening.number(), SOMAXCONN), 0);
        ::getsockname(listening.number(), reinterpret_cast<sockaddr*>(&address), &length);
        port_ = ntohs(address.sin_port);
        host::make_non_blocking(listening);
        connections_ = std::make_unique<Connections>(
            std::move(listening), limits,
            Connections::Answering{
                [](const Head& head) -> std::optional<Refusal> {
                    return head.target == "/no" ? std::optional(Refusal{403, "No."}) : std::nullopt;
                },
                [this](const Exchange& exchange) { return answer(exchange); }, "X: y\r\n"});
    }

    bool answer(const Exchange& exchange) {
        ++begun_;
        while (exchange.head.target == "/wait" && !may_go_on_) {
            std::this_thread::yield();
        }
        host::write_all(
            exchange.socket,
            "[" + exchange.head.target + exchange.body + (exchange.last ? "!" : "") + "]",
            host::after(patience));
        return exchange.head.target != "/broken";
    }

    Client client() const {
        return Client(port_);
    }

    static std::string get(const std::string& target) {
        return "GET " + target + " HTTP/1.1\r\n\r\n";
    }

    std::atomic<bool> may_go_on_{false};
    std::atomic<unsigned int> begun_{0};
    std::unique_ptr<Connections> connections_;
    int port_ = 0;
};

TEST_F(ConnectionsTest, ServeOneRequestAfterTheOther) {
    start({});
    const Client one = client();
    one.write(get("/a"));
    EXPECT_EQ(one.read(4), "[/a]");
    one.write("POST /b HTTP/1.1\r\nContent-Length: 5\r\n\r\n");
    one.write("12345");
    EXPECT_EQ(one.read(9), "[/b12345]");
}

TEST_F(ConnectionsTest, ServeRequestsThatComeInOneGoInOrder) {
    start({});
    const Client one = client();
    one.write(get("/a") + "POST /b HTTP/1.1\r\nContent-Length: 2\r\n\r\nxy" + get("/c"));
    EXPECT_EQ(one.read(14), "[/a][/bxy][/c]");
}

TEST_F(ConnectionsTest, RefuseBeforeTheBodyAndNameEveryHeader) {
    start({});
    const Client one = client();
    one.write("POST /no HTTP/1.1\r\nContent-Length: 1000000\r\n\r\n");
    EXPECT_EQ(one.read(),
              "HTTP/1.1 403 \r\nX: y\r\nContent-Type: text/plain; charset=utf-8\r\n"
              "Connection: close\r\nContent-Length: 4\r\n\r\nNo.\n");
    EXPECT_EQ(begun_, 0U);
}

TEST_F(ConnectionsTest, AnswerNothingBehindARefusal) {
    start({});
    const Client one = client();
    one.write(
        "GET /a HTTP/1.1\r\nTransfer-Encoding: chunked\r\nContent-Length: 4\r\n\r\n0\r\n\r\n" +
        get("/b"));
    EXPECT_EQ(one.read().substr(0, 13), "HTTP/1.1 400 ");
    EXPECT_EQ(begun_, 0U);
}

TEST_F(ConnectionsTest, RefuseAHeadThatIsTooLong) {
    start({});
    const Client one = client();
    one.write("GET / HTTP/1.1\r\nX: " + std::string(longest_head, 'x'));
    EXPECT_EQ(one.read().substr(0, 13), "HTTP/1.1 431 ");
}

TEST_F(ConnectionsTest, CloseOneThatAsksNothing) {
    Limits limits;
    limits.request_time = 20ms;
    start(limits);
    EXPECT_EQ(client().read(), "");
}

TEST_F(ConnectionsTest, CloseOneThatIsIdleForTooLong) {
    Limits limits;
    limits.idle_time = 20ms;
    start(limits);
    const Client one = client();
    one.write(get("/a"));
    EXPECT_EQ(one.read(), "[/a]");
}

TEST_F(ConnectionsTest, CloseASlowSender) {
    Limits limits;
    limits.request_time = 200ms;
    start(limits);
    const Client one = client();
    const auto begun = host::Clock::now();
    // Each byte comes soon enough for who only counts from byte to byte.
    std::atomic<bool> closed{false};
    std::thread writing([&] {
        const std::string text = "GET / HTTP/1.1\r\nX: " + std::string(10'000, 'x');
        for (std::size_t at = 0; at < text.size() && !closed; ++at) {
            one.write(text.substr(at, 1));
            std::this_thread::sleep_for(5ms);
        }
    });
    EXPECT_EQ(one.read(), "");
    EXPECT_LT(host::Clock::now() - begun, 20s);
    closed = true;
    writing.join();
    EXPECT_EQ(begun_, 0U);
}

TEST_F(ConnectionsTest, CloseASlowSenderOfABody) {
    Limits limits;
    limits.request_time = 50ms;
    start(limits);
    const Client one = client();
    one.write("POST / HTTP/1.1\r\nContent-Length: 5\r\n\r\n1234");
    EXPECT_EQ(one.read(), "");
    EXPECT_EQ(begun_, 0U);
}

TEST_F(ConnectionsTest, CloseBehindTheLastOfTooManyRequests) {
    Limits limits;
    limits.requests = 3;
    start(limits);
    const Client one = client();
    one.write(get("/a") + get("/b") + get("/c") + get("/d"));
    EXPECT_EQ(one.read(), "[/a][/b][/c!]");
}

TEST_F(ConnectionsTest, CloseOneThatBrokeOrSaysItIsTheLast) {
    start({});
    const Client broken = client();
    broken.write(get("/broken") + get("/b"));
    EXPECT_EQ(broken.read(), "[/broken]");
    const Client last = client();
    last.write("GET /a HTTP/1.1\r\nConnection: close\r\n\r\n" + get("/b"));
    EXPECT_EQ(last.read(), "[/a!]");
}

TEST_F(ConnectionsTest, GiveTheRoomOfTheOldestIdleOneToTheNext) {
    Limits limits;
    limits.connections = 10;
    start(limits);
    std::vector<Client> idle;
    for (int count = 0; count < 50; ++count) {
        idle.push_back(client());
        EXPECT_TRUE(idle.back().is_connected());
    }
    const Client one = client();
    one.write(get("/a"));
    EXPECT_EQ(one.read(4), "[/a]");
    EXPECT_EQ(idle.front().read(), "") << "the oldest was closed";
    idle.back().write(get("/b"));
    EXPECT_EQ(idle.back().read(4), "[/b]") << "the latest was not";
}

TEST_F(ConnectionsTest, LetTheOldestIdleOneGoForTheNextWhenNoDescriptorIsLeft) {
    start({});
    const Client idle = client();
    idle.write(get("/a"));
    EXPECT_EQ(idle.read(4), "[/a]");
    Client one;
    const NoDescriptors now;
    one.connect(port_);
    one.write(get("/b"));
    EXPECT_EQ(one.read(4), "[/b]");
    EXPECT_EQ(idle.read(), "");
}

TEST_F(ConnectionsTest, WaitForADescriptorWithoutSpinning) {
    start({});
    Client one;
    {
        const NoDescriptors now;
        const auto begun = processor_time();
        one.connect(port_);
        one.write(get("/a"));
        EXPECT_FALSE(one.hears_something_by(host::after(500ms)));
        EXPECT_LT(processor_time() - begun, 250ms);
    }
    EXPECT_EQ(one.read(4), "[/a]");
}

TEST_F(ConnectionsTest, RefuseWhatIsTooMuchAtTheSameTime) {
    Limits limits;
    limits.served = 2;
    start(limits);
    const Client one = client();
    const Client two = client();
    one.write(get("/wait"));
    two.write(get("/wait"));
    while (begun_ < 2) {
        std::this_thread::yield();
    }
    const Client three = client();
    three.write(get("/a"));
    EXPECT_EQ(three.read().substr(0, 13), "HTTP/1.1 503 ");
    may_go_on_ = true;
    EXPECT_EQ(one.read(7), "[/wait]");
    EXPECT_EQ(two.read(7), "[/wait]");
}

TEST_F(ConnectionsTest, EndAtAnyMoment) {
    // Requests that are answered just then, among many that are still being read.
    for (int count = 0; count < 100; ++count) {
        start({});
        std::vector<Client> clients;
        clients.reserve(60);
        for (int number = 0; number < 60; ++number) {
            clients.push_back(client());
        }
        for (std::size_t number = 0; number < clients.size(); ++number) {
            clients[number].write(number % 10 == 0 ? get("/a") : "GET");
        }
        EXPECT_EQ(clients[static_cast<std::size_t>(count % 6 * 10)].read(4), "[/a]");
        connections_.reset();
    }
}

TEST_F(ConnectionsTest, EndBehindWhatIsBeingAnswered) {
    start({});
    const Client one = client();
    const Client idle = client();
    one.write(get("/wait"));
    while (begun_ < 1) {
        std::this_thread::yield();
    }
    std::thread ending([&] { connections_.reset(); });
    EXPECT_EQ(idle.read(), "");
    may_go_on_ = true;
    EXPECT_EQ(one.read(), "[/wait]");
    ending.join();
}

}  // namespace
}  // namespace console
