#include "tests/worker/processes/output_pipe.h"

#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <sched.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/worker/processes/pace.h"

OutputPipe::OutputPipe() {
    mkfifo(path_.c_str(), 0600);
    read_end_ = host::Descriptor(open(path_.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
}

Plan OutputPipe::plan() const {
    Plan plan;
    plan.shell = "exec \"$@\" >\"$OUTPUT_PIPE\"";
    plan.environment = {{"OUTPUT_PIPE", path_}};
    return plan;
}

void OutputPipe::await_full() {
    const host::Descriptor probe = writing_end();
    pollfd room{probe.number(), POLLOUT, 0};
    while (poll(&room, 1, 0) != 0) {
        sched_yield();
    }
}

void OutputPipe::fill() {
    const host::Descriptor filling = writing_end();
    const std::string filler(65536, '.');
    for (std::size_t size = filler.size(); size > 0;) {
        size = write(filling.number(), filler.data(), size) < 0 ? size / 2 : size;
    }
}

std::string OutputPipe::read_until(const std::string& text) {
    std::string bytes;
    while (bytes.find(text) == std::string::npos && read_some(bytes)) {}
    return bytes;
}

std::string OutputPipe::read_to_end() {
    std::string bytes;
    while (read_some(bytes)) {}
    return bytes;
}

void OutputPipe::close() {
    read_end_.close();
}

host::Descriptor OutputPipe::writing_end() const {
    return host::Descriptor(open(path_.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC));
}

// False at the end of the output, or when nothing comes.
bool OutputPipe::read_some(std::string& bytes) {
    pollfd source{read_end_.number(), POLLIN, 0};
    if (poll(&source, 1, host::poll_timeout(host::after(patience))) != 1) {
        return false;
    }
    char buffer[65536];
    const ssize_t count = read(read_end_.number(), buffer, sizeof buffer);
    bytes.append(buffer, count > 0 ? static_cast<std::size_t>(count) : 0);
    return count > 0;
}
