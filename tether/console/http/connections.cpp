#include "tether/console/http/connections.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <memory>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

namespace console {

using host::MutexLock;
using host::TimePoint;

namespace {

// Who still writes when it is refused would miss the answer if the connection were closed at once.
constexpr std::chrono::seconds to_read_the_refusal{2};
// For answers that are being written when the program ends.
constexpr std::chrono::seconds to_end_in_order{2};
constexpr std::size_t most_thrown_away = std::size_t{8} << 20;
// While the process has no descriptor for a browser that wants to come in.
constexpr std::chrono::milliseconds to_rest{100};

void prepare(const host::Descriptor& socket) {
    fcntl(socket.number(), F_SETFD, FD_CLOEXEC);
    host::make_non_blocking(socket);
    // An event is not held back until the one before has arrived.
    const int on = 1;
    setsockopt(socket.number(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

bool somebody_waits(const host::Descriptor& listening) {
    pollfd waited{listening.number(), POLLIN, 0};
    return ::poll(&waited, 1, 0) == 1;
}

std::string text_of(const Refusal& refusal, const std::string& headers) {
    std::string text = "HTTP/1.1 " + std::to_string(refusal.status) + " \r\n" + headers +
                       "Content-Type: text/plain; charset=utf-8\r\nConnection: close\r\n";
    if (refusal.status == 405) {
        text += "Allow: GET, HEAD, POST\r\n";
    }
    return text + "Content-Length: " + std::to_string(refusal.sentence.size() + 1) + "\r\n\r\n" +
           std::string(refusal.sentence) + "\n";
}

}  // namespace

Connections::Connections(host::Descriptor listening, Limits limits, Answering answering)
    : listening_(std::move(listening)),
      limits_(limits),
      answering_(std::move(answering)),
      thread_([this] { work(); }) {}

Connections::~Connections() {
    end(TimePoint::max());
}

bool Connections::end(TimePoint deadline) {
    if (thread_.joinable()) {
        {
            const MutexLock lock(mutex_);
            ending_ = true;
        }
        wake_up_.wake();
        thread_.join();
        waiting_.clear();
    }
    const TimePoint in_order = std::min(deadline, host::after(to_end_in_order));
    const MutexLock lock(mutex_);
    while (!being_served_.empty() && mutex_.wait_until(served_, in_order)) {}
    for (const int socket : being_served_) {
        ::shutdown(socket, SHUT_RDWR);
    }
    while (!being_served_.empty() && mutex_.wait_until(served_, deadline)) {}
    return being_served_.empty();
}

void Connections::work() {
    while (true) {
        if (rests_until_ && *rests_until_ <= host::Clock::now()) {
            rests_until_.reset();
        }
        std::vector<pollfd> watched{{wake_up_.descriptor(), POLLIN, 0},
                                    {rests_until_ ? -1 : listening_.number(), POLLIN, 0}};
        for (const Connection& connection : waiting_) {
            watched.push_back({connection.socket.number(), POLLIN, 0});
        }
        ::poll(watched.data(), static_cast<nfds_t>(watched.size()), until_next_deadline());
        // Before looking at what it may be about.
        wake_up_.clear();
        {
            const MutexLock lock(mutex_);
            if (ending_) {
                return;
            }
        }
        const TimePoint now = host::Clock::now();
        auto connection = waiting_.begin();
        for (std::size_t at = 2; at < watched.size(); ++at) {
            // What can be read counts before the deadline.
            const bool stays =
                watched[at].revents != 0 ? read(*connection) : connection->deadline > now;
            connection = stays ? std::next(connection) : waiting_.erase(connection);
        }
        take_back();
        if (watched[1].revents != 0) {
            accept_all();
        }
    }
}

int Connections::until_next_deadline() const {
    TimePoint next = rests_until_.value_or(TimePoint::max());
    for (const Connection& connection : waiting_) {
        next = std::min(next, connection.deadline);
    }
    return next == TimePoint::max() ? -1 : host::poll_timeout(next);
}

void Connections::accept_all() {
    while (true) {
        Connection connection;
        connection.socket = host::Descriptor(::accept(listening_.number(), nullptr, nullptr));
        if (!connection.socket.is_open()) {
            // The lack of a descriptor is told even when nobody wants to come in.
            const bool none_left =
                (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM) &&
                somebody_waits(listening_);
            if (none_left && !waiting_.empty()) {
                // The one that is given up lets the next in.
                waiting_.pop_front();
                continue;
            }
            if (none_left) {
                rests_until_ = host::after(to_rest);
            }
            return;
        }
        prepare(connection.socket);
        connection.deadline = host::after(limits_.request_time);
        waiting_.push_back(std::move(connection));
        make_room();
    }
}

// The oldest of those that have asked nothing goes first.
void Connections::make_room() {
    std::size_t served = 0;
    {
        const MutexLock lock(mutex_);
        served = being_served_.size();
    }
    while (!waiting_.empty() && waiting_.size() + served > limits_.connections) {
        waiting_.pop_front();
    }
}

// False: the connection is not waited for any more.
bool Connections::read(Connection& connection) {
    std::array<char, 16384> bytes;
    const ssize_t count = ::recv(connection.socket.number(), bytes.data(), bytes.size(), 0);
    if (count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR)) {
        return false;
    }
    if (count < 0) {
        return true;
    }
    if (connection.refused) {
        connection.thrown_away += static_cast<std::size_t>(count);
        return connection.thrown_away < most_thrown_away;
    }
    if (connection.read.empty()) {
        connection.deadline = host::after(limits_.request_time);
    }
    connection.read.append(bytes.data(), static_cast<std::size_t>(count));
    return look_for_request(connection);
}

// False: a request is complete, and the connection is with who serves it.
bool Connections::look_for_request(Connection& connection) {
    if (!connection.head && !take_head(connection)) {
        return true;
    }
    if (connection.read.size() < connection.length_of_head + connection.head->body) {
        return true;
    }
    serve(std::move(connection));
    return false;
}

bool Connections::take_head(Connection& connection) {
    const auto length = length_of_head(connection.read);
    if (length.value_or(connection.read.size()) > longest_head) {
        refuse(connection, {431, "The head of a request has at most 16384 bytes."});
        return false;
    }
    if (!length) {
        return false;
    }
    auto head = read_head(std::string_view(connection.read).substr(0, *length));
    const auto* refusal = std::get_if<Refusal>(&head);
    if (refusal != nullptr) {
        refuse(connection, *refusal);
        return false;
    }
    if (const auto refused = answering_.refuses(std::get<Head>(head))) {
        refuse(connection, *refused);
        return false;
    }
    connection.head = std::move(std::get<Head>(head));
    connection.length_of_head = *length;
    return true;
}

void Connections::refuse(Connection& connection, const Refusal& refusal) {
    // Short enough for the room that a socket always has.
    const std::string text = text_of(refusal, answering_.headers);
    static_cast<void>(host::write_all(connection.socket, text, TimePoint{}));
    ::shutdown(connection.socket.number(), SHUT_WR);
    connection.refused = true;
    connection.read = {};
    connection.deadline = host::after(to_read_the_refusal);
}

void Connections::serve(Connection connection) {
    const auto request = std::make_shared<Connection>(std::move(connection));
    const int number = request->socket.number();
    ++request->requests;
    try {
        const MutexLock lock(mutex_);
        if (being_served_.size() < limits_.served) {
            std::thread([this, request] { serve_here(*request); }).detach();
            being_served_.insert(number);
            return;
        }
    } catch (const std::system_error&) {
        // The system has no thread left.
    }
    request->head.reset();
    refuse(*request, {503, "Too much is asked at the same time."});
    waiting_.push_back(std::move(*request));
}

// The thread of one request.
void Connections::serve_here(Connection& connection) {
    Exchange exchange{std::move(*connection.head),
                      connection.read.substr(connection.length_of_head, connection.head->body),
                      connection.socket};
    connection.read.erase(0, connection.length_of_head + exchange.body.size());
    connection.head.reset();
    exchange.last = exchange.head.last || connection.requests >= limits_.requests;
    const bool usable = answering_.serve(exchange) && !exchange.last;
    const int number = connection.socket.number();
    // The thread that ends first finds its number, once that has been put there.
    const MutexLock lock(mutex_);
    if (usable) {
        connection.deadline =
            host::after(connection.read.empty() ? limits_.idle_time : limits_.request_time);
        coming_back_.push_back(std::move(connection));
    } else {
        // Before its number is taken out: another connection may get the same one.
        connection.socket.close();
    }
    being_served_.erase(number);
    served_.notify_all();
    wake_up_.wake();
}

// Requests that came behind one that has been answered.
void Connections::take_back() {
    Waiting back;
    {
        const MutexLock lock(mutex_);
        back.swap(coming_back_);
    }
    while (!back.empty()) {
        if (back.front().read.empty() || look_for_request(back.front())) {
            waiting_.splice(waiting_.end(), back, back.begin());
        } else {
            back.pop_front();
        }
    }
}

}  // namespace console
