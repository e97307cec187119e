#include "tether/watch/programs.h"

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <signal.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>

#include "host/process/spawn.h"
#include "tether/live/happenings.h"

namespace tether {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t most_at_a_time = 2;

bool can_be_run(const fs::path& program) {
    std::error_code missing;
    return fs::is_regular_file(program, missing) && access(program.c_str(), X_OK) == 0;
}

void post_end(const std::string& picture, const std::string& trouble, bool cut_short) {
    happenings().post(Happening(ProgramEnded{picture, trouble, cut_short}));
}

// Waits on a thread of its own, which holds what it uses: a program may be stuck in the system.
void post_when_ended(const std::string& picture, const std::string& name,
                     std::shared_ptr<host::ExitWatch> watch,
                     std::chrono::milliseconds time_to_run) {
    std::thread([picture, name, watch = std::move(watch), time_to_run] {
        std::optional<host::Exit> exit = watch->await(host::after(time_to_run));
        const bool late = !exit;
        if (late) {
            watch->signal_group(SIGKILL);
            exit = watch->await(host::TimePoint::max());
        }
        post_end(picture,
                 late            ? name + " took too long and was killed"
                 : exit->clean() ? ""
                                 : name + " ended with " + describe(*exit),
                 !late && exit->signal == SIGKILL);
    }).detach();
}

}  // namespace

std::optional<std::string> find_program(const std::string& name, std::string& why) {
    if (name.find('/') != std::string::npos) {
        if (can_be_run(name)) {
            return fs::absolute(name).string();
        }
        why = "there is no program that can be run at " + name;
        return std::nullopt;
    }
    const char* value = std::getenv("PATH");
    std::string path = value == nullptr ? "/usr/bin:/bin" : value;
    for (std::size_t end = 0; !name.empty() && end != std::string::npos;) {
        end = path.find(':');
        const fs::path program = fs::path(path.substr(0, end)) / name;
        if (can_be_run(program)) {
            return fs::absolute(program).string();
        }
        path.erase(0, end == std::string::npos ? end : end + 1);
    }
    why = "there is no program " + name + " in PATH";
    return std::nullopt;
}

void Programs::run(const host::Picture& picture) {
    if (any()) {
        waiting_.push_back({picture.id, picture.path});
        start_next();
    }
}

void Programs::ended(const std::string& picture) {
    running_.erase(picture);
    start_next();
}

void Programs::kill_all() {
    for (const auto& [picture, watch] : running_) {
        watch->signal_group(SIGKILL);
    }
}

void Programs::start_next() {
    while (starting_ && !waiting_.empty() && running_.size() < most_at_a_time) {
        const Turn turn = std::move(waiting_.front());
        waiting_.pop_front();
        start(turn);
    }
}

void Programs::start(const Turn& turn) {
    host::SpawnRequest request;
    request.executable = command_.front();
    request.arguments.assign(command_.begin() + 1, command_.end());
    request.arguments.push_back(turn.path);
    const host::Descriptor nothing(open("/dev/null", O_RDWR | O_CLOEXEC));
    const host::Descriptor output(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
    std::string why;
    const std::optional<pid_t> process = host::spawn(request, nothing, output, why);
    if (!process) {
        return post_end(turn.picture, why, false);
    }
    const auto watch = std::make_shared<host::ExitWatch>(*process);
    running_[turn.picture] = watch;
    post_when_ended(turn.picture, fs::path(command_.front()).filename(), watch, time_to_run_);
}

}  // namespace tether
