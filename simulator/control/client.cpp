#include "simulator/control/client.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>

namespace camera_sim {
namespace {

bool send_all(int socket, std::string_view text) {
#if defined(MSG_NOSIGNAL)
    constexpr int flags = MSG_NOSIGNAL;
#else
    constexpr int flags = 0;  // SO_NOSIGPIPE is set on the socket
#endif
    while (!text.empty()) {
        const ssize_t sent = send(socket, text.data(), text.size(), flags);
        if (sent < 0 && errno == EINTR) {
            continue;
        }
        if (sent <= 0) {
            return false;
        }
        text.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

}  // namespace

std::optional<ControlClient> ControlClient::connect(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        return std::nullopt;
    }
    std::strcpy(address.sun_path, path.c_str());
    const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    if (socket < 0) {
        return std::nullopt;
    }
    ControlClient client(socket);
    fcntl(socket, F_SETFD, FD_CLOEXEC);
#if defined(SO_NOSIGPIPE)
    const int on = 1;
    setsockopt(socket, SOL_SOCKET, SO_NOSIGPIPE, &on, sizeof on);
#endif
    if (::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        return std::nullopt;
    }
    return client;
}

ControlClient::ControlClient(ControlClient&& other) noexcept
    : socket_(std::exchange(other.socket_, -1)), received_(std::move(other.received_)) {}

ControlClient& ControlClient::operator=(ControlClient&& other) noexcept {
    std::swap(socket_, other.socket_);
    std::swap(received_, other.received_);
    return *this;
}

ControlClient::~ControlClient() {
    if (socket_ >= 0) {
        close(socket_);
    }
}

std::optional<Reply> ControlClient::ask(const std::string& line) {
    if (!send_all(socket_, line + "\n")) {
        return std::nullopt;
    }
    constexpr std::string_view error = "error: ";
    Reply reply;
    while (const auto answer = read_line()) {
        if (*answer == "ok") {
            reply.ok = true;
            return reply;
        }
        if (answer->compare(0, error.size(), error) == 0) {
            reply.error = answer->substr(error.size());
            return reply;
        }
        reply.lines.push_back(
            answer->substr(std::min(answer->find_first_not_of(' '), answer->size())));
    }
    return std::nullopt;
}

std::optional<std::string> ControlClient::read_line() {
    char buffer[4096];
    std::size_t end;
    while ((end = received_.find('\n')) == std::string::npos) {
        const ssize_t got = recv(socket_, buffer, sizeof buffer, 0);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            return std::nullopt;
        }
        received_.append(buffer, static_cast<std::size_t>(got));
    }
    std::string line = received_.substr(0, end);
    received_.erase(0, end + 1);
    return line;
}

}  // namespace camera_sim
