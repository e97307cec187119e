#include "bench/measure/subject.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host/process/spawn.h"

namespace {

constexpr std::size_t buffer_size = 1 << 16;

}  // namespace

void give_up(const std::string& why) {
    std::fprintf(stderr, "measure: %s\n", why.c_str());
    std::exit(1);
}

Subject::Subject(const std::string& executable, const std::vector<std::string>& arguments,
                 const Environment& environment)
    : buffer_(buffer_size) {
    std::optional<host::Pipe> input = host::make_pipe();
    std::optional<host::Pipe> output = host::make_pipe();
    if (!input || !output) {
        give_up("no pipe can be made");
    }
    std::string error;
    const std::optional<pid_t> process =
        host::spawn({executable, arguments, environment, "/dev/null"}, input->read_end,
                    output->write_end, error);
    if (!process) {
        give_up(error);
    }
    process_ = *process;
    input_ = std::move(input->write_end);
    output_ = std::move(output->read_end);
}

Subject::~Subject() {
    if (running_) {
        kill(process_, SIGKILL);
        await_end();
    }
}

void Subject::say(std::string_view bytes) {
    while (!bytes.empty()) {
        if (!write_some(bytes)) {
            pollfd room{input_.number(), POLLOUT, 0};
            poll(&room, 1, -1);
        }
    }
}

std::string_view Subject::hear() {
    for (;;) {
        char* const start = buffer_.data() + begin_;
        if (void* const feed = std::memchr(start, '\n', end_ - begin_)) {
            const auto length = static_cast<std::size_t>(static_cast<char*>(feed) - start);
            begin_ += length + 1;
            return {start, length};
        }
        read_some();
    }
}

std::string_view Subject::watch() {
    pollfd lines{output_.number(), POLLIN, 0};
    while (begin_ == end_ && poll(&lines, 1, 0) == 0) {}
    return hear();
}

void Subject::hear_until(std::string_view line) {
    while (hear() != line) {}
}

void Subject::pour(std::string_view bytes, long lines, const std::function<void(long)>& heard) {
    host::make_non_blocking(input_);
    long count = 0;
    while (count < lines) {
        pollfd ends[] = {{output_.number(), POLLIN, 0},
                         {bytes.empty() ? -1 : input_.number(), POLLOUT, 0}};
        poll(ends, 2, -1);
        if (ends[1].revents != 0) {
            while (!bytes.empty() && write_some(bytes)) {}
        }
        if (ends[0].revents != 0) {
            read_some();
            count += std::count(buffer_.begin() + static_cast<std::ptrdiff_t>(begin_),
                                buffer_.begin() + static_cast<std::ptrdiff_t>(end_), '\n');
            begin_ = end_;
            heard(count);
        }
    }
}

void Subject::await_end() {
    while (waitpid(process_, nullptr, 0) < 0 && errno == EINTR) {}
    running_ = false;
}

bool Subject::write_some(std::string_view& bytes) {
    const ssize_t written = write(input_.number(), bytes.data(), bytes.size());
    if (written < 0 && errno == EAGAIN) {
        return false;
    }
    if (written < 0) {
        give_up(std::string("a child takes no input: ") + std::strerror(errno));
    }
    bytes.remove_prefix(static_cast<std::size_t>(written));
    return true;
}

void Subject::read_some() {
    // What is left is the beginning of a line.
    std::copy(buffer_.begin() + static_cast<std::ptrdiff_t>(begin_),
              buffer_.begin() + static_cast<std::ptrdiff_t>(end_), buffer_.begin());
    end_ -= std::exchange(begin_, 0);
    const ssize_t got = read(output_.number(), buffer_.data() + end_, buffer_.size() - end_);
    if (got <= 0) {
        give_up("a child ended its output too early");
    }
    end_ += static_cast<std::size_t>(got);
}
