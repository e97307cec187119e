#include "tests/simulator/other_process.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

OtherProcess::OtherProcess(const std::string& folder, int shots, const std::string& error_file) {
    int input[2];
    int output[2];
    if (pipe(input) != 0 || pipe(output) != 0) {
        std::abort();
    }
    for (const int end : {input[0], input[1], output[0], output[1]}) {
        fcntl(end, F_SETFD, FD_CLOEXEC);
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    if (!error_file.empty()) {
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, error_file.c_str(),
                                         O_WRONLY | O_CREAT | O_APPEND, 0644);
    }
    std::string program = SIMULATOR_SHOOTER;
    std::string where = folder;
    std::string how_often = std::to_string(shots);
    char* const arguments[] = {program.data(), where.data(), how_often.data(), nullptr};
    if (posix_spawn(&process_, program.c_str(), &actions, nullptr, arguments, environ) != 0) {
        std::abort();
    }
    posix_spawn_file_actions_destroy(&actions);
    close(input[0]);
    close(output[1]);
    input_ = input[1];
    output_ = output[0];
}

OtherProcess::~OtherProcess() {
    if (process_ > 0) {
        kill();
    }
    close(output_);
}

std::optional<std::string> OtherProcess::line() {
    std::size_t end;
    while ((end = received_.find('\n')) == std::string::npos) {
        char buffer[4096];
        const ssize_t got = read(output_, buffer, sizeof buffer);
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

std::vector<std::string> OtherProcess::lines_until(const std::string& last) {
    std::vector<std::string> lines;
    for (auto came = line(); came && *came != last; came = line()) {
        lines.push_back(*came);
    }
    return lines;
}

void OtherProcess::kill() {
    ::kill(process_, SIGKILL);
    end();
}

int OtherProcess::end() {
    close(input_);
    input_ = -1;
    int status = 0;
    while (waitpid(process_, &status, 0) < 0 && errno == EINTR) {}
    process_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}
