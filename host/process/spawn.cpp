#include "host/process/spawn.h"

#include <cstring>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <string_view>
#include <unistd.h>

extern char** environ;

namespace host {
namespace {

constexpr int first_beside_standard_streams = 3;

// The child's three standard streams, and what it gets beside them.
class FileActions {
  public:
    FileActions(const SpawnRequest& request, int standard_input, int standard_output) {
        posix_spawn_file_actions_init(&actions_);
        posix_spawn_file_actions_adddup2(&actions_, standard_input, STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&actions_, standard_output, STDOUT_FILENO);
        if (request.error_descriptor >= 0) {
            posix_spawn_file_actions_adddup2(&actions_, request.error_descriptor, STDERR_FILENO);
        } else if (request.error_file) {
            posix_spawn_file_actions_addopen(&actions_, STDERR_FILENO, request.error_file->c_str(),
                                             O_WRONLY | O_CREAT | O_APPEND, 0644);
        } else {
#if defined(__APPLE__)
            posix_spawn_file_actions_addinherit_np(&actions_, STDERR_FILENO);
#endif
        }
        // Last: it may take the place of a number that the streams above were made from. One onto
        // itself only loses its close-on-exec flag.
        if (request.inherited_descriptor >= 0) {
            posix_spawn_file_actions_adddup2(&actions_, request.inherited_descriptor,
                                             first_beside_standard_streams);
        }
    }
    ~FileActions() {
        posix_spawn_file_actions_destroy(&actions_);
    }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;

    const posix_spawn_file_actions_t* get() const {
        return &actions_;
    }

  private:
    posix_spawn_file_actions_t actions_;
};

// No signal blocked, none ignored, whatever this thread does with them; a process group of its own.
class Attributes {
  public:
    Attributes() {
        sigset_t none;
        sigemptyset(&none);
        sigset_t all;
        sigfillset(&all);
        short flags = POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP;
#if defined(__APPLE__)
        flags |= POSIX_SPAWN_CLOEXEC_DEFAULT;
#endif
        posix_spawnattr_init(&attributes_);
        posix_spawnattr_setsigmask(&attributes_, &none);
        posix_spawnattr_setsigdefault(&attributes_, &all);
        posix_spawnattr_setpgroup(&attributes_, 0);
        posix_spawnattr_setflags(&attributes_, flags);
    }
    ~Attributes() {
        posix_spawnattr_destroy(&attributes_);
    }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;

    const posix_spawnattr_t* get() const {
        return &attributes_;
    }

  private:
    posix_spawnattr_t attributes_;
};

std::vector<std::string> environment_with(
    const std::vector<std::pair<std::string, std::string>>& additions) {
    std::vector<std::string> environment;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string_view text(*entry);
        const std::string_view name = text.substr(0, text.find('='));
        bool replaced = false;
        for (const auto& addition : additions) {
            replaced = replaced || addition.first == name;
        }
        if (!replaced) {
            environment.emplace_back(text);
        }
    }
    for (const auto& [name, value] : additions) {
        environment.emplace_back(name).append("=").append(value);
    }
    return environment;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    result.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        result.push_back(text.data());
    }
    result.push_back(nullptr);
    return result;
}

}  // namespace

std::optional<pid_t> spawn(const SpawnRequest& request, const Descriptor& standard_input,
                           const Descriptor& standard_output, std::string& error) {
    std::vector<std::string> arguments{request.executable};
    arguments.insert(arguments.end(), request.arguments.begin(), request.arguments.end());
    std::vector<std::string> environment = environment_with(request.environment);

    const FileActions actions(request, standard_input.number(), standard_output.number());
    const Attributes attributes;
    pid_t process = 0;
    const int failure =
        posix_spawn(&process, request.executable.c_str(), actions.get(), attributes.get(),
                    pointers(arguments).data(), pointers(environment).data());
    if (failure != 0) {
        error = "cannot start " + request.executable + ": " + std::strerror(failure);
        return std::nullopt;
    }
    return process;
}

}  // namespace host
