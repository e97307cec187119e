#include "tether/serve/virtual_camera.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <string_view>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>

#include "host/process/pipe.h"

namespace serve {

using host::MutexLock;
using host::TimePoint;

namespace {

constexpr std::size_t most_waiting = 8;
constexpr std::size_t longest_answer = std::size_t{1} << 18;
constexpr std::string_view refused = "error: ";

host::Descriptor connected(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        return {};
    }
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    // A worker may be started meanwhile, and must not get it.
#ifdef SOCK_CLOEXEC
    host::Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
#else
    host::Descriptor socket(::socket(AF_UNIX, SOCK_STREAM, 0));
    fcntl(socket.number(), F_SETFD, FD_CLOEXEC);
#endif
    if (!socket.is_open()) {
        return {};
    }
    // A camera with too many clients makes none wait here.
    host::make_non_blocking(socket);
    if (::connect(socket.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) !=
        0) {
        return {};
    }
    return socket;
}

// Up to the line that ends the answer.
std::optional<std::vector<std::string>> read_answer(const host::Descriptor& socket,
                                                    TimePoint deadline) {
    std::vector<std::string> lines;
    std::string rest;
    std::size_t taken = 0;
    while (taken <= longest_answer) {
        for (std::size_t end = 0; (end = rest.find('\n')) != std::string::npos;) {
            std::string line = rest.substr(0, end);
            rest.erase(0, end + 1);
            const bool last = line == "ok" || line.compare(0, refused.size(), refused) == 0;
            // Blanks tell what the camera says from how the answer ends.
            line.erase(0, std::min(line.find_first_not_of(' '), line.size()));
            lines.push_back(std::move(line));
            if (last) {
                return lines;
            }
        }
        pollfd readable{socket.number(), POLLIN, 0};
        if (::poll(&readable, 1, host::poll_timeout(deadline)) == 0) {
            return std::nullopt;
        }
        char buffer[4096];
        const ssize_t count = ::read(socket.number(), buffer, sizeof buffer);
        if (count == 0 || (count < 0 && errno != EINTR && errno != EAGAIN)) {
            return std::nullopt;
        }
        if (count > 0) {
            rest.append(buffer, static_cast<std::size_t>(count));
            taken += static_cast<std::size_t>(count);
        }
    }
    return std::nullopt;
}

std::optional<std::vector<std::string>> ask(const std::string& path, const std::string& line,
                                            TimePoint deadline) {
    const host::Descriptor socket = connected(path);
    if (!socket.is_open() || !host::write_all(socket, line + "\n", deadline)) {
        return std::nullopt;
    }
    return read_answer(socket, deadline);
}

}  // namespace

VirtualCamera::VirtualCamera(std::string socket)
    : socket_(std::move(socket)), thread_([this] { work(); }) {}

VirtualCamera::~VirtualCamera() {
    {
        const MutexLock lock(mutex_);
        ending_ = true;
    }
    changed_.notify_one();
    thread_.join();
}

bool VirtualCamera::tell(std::string line, TimePoint deadline, Answered answered) {
    {
        const MutexLock lock(mutex_);
        if (questions_.size() >= most_waiting) {
            return false;
        }
        questions_.push_back({std::move(line), deadline, std::move(answered)});
    }
    changed_.notify_one();
    return true;
}

void VirtualCamera::work() {
    while (true) {
        Question question;
        {
            const MutexLock lock(mutex_);
            while (!ending_ && questions_.empty()) {
                mutex_.wait(changed_);
            }
            if (ending_) {
                return;
            }
            question = std::move(questions_.front());
            questions_.pop_front();
        }
        question.answered(ask(socket_, question.line, question.deadline));
    }
}

}  // namespace serve
