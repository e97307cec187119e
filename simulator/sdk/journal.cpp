#include "simulator/sdk/journal.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

#include "simulator/sdk/strictness.h"

namespace camera_sim {
namespace {

int g_journal SIM_ANNOTATION(guarded_by(g_lock)) = -1;
thread_local const char* t_thread_name = "other";

std::string seconds(Duration duration) {
    const auto microseconds =
        std::chrono::duration_cast<std::chrono::microseconds>(duration).count();
    char text[40];
    std::snprintf(text, sizeof text, "%lld.%06lld",
                  static_cast<long long>(microseconds / 1'000'000),
                  static_cast<long long>(microseconds % 1'000'000));
    return text;
}

}  // namespace

void open_journal(const char* path) {
    // A pipe that nobody reads would hold Init up; one that somebody reads must lose no line.
    g_journal = open(path, O_WRONLY | O_CREAT | O_APPEND | O_NONBLOCK | O_CLOEXEC, 0644);
    if (g_journal < 0) {
        stop(std::string("the journal ") + path + " cannot be opened: " + std::strerror(errno));
    }
    fcntl(g_journal, F_SETFL, O_APPEND);
}

void close_journal() {
    if (g_journal >= 0) {
        close(g_journal);
        g_journal = -1;
    }
}

void journal(Clock::time_point start, std::optional<Duration> duration, const std::string& call,
             const std::string& result) {
    if (g_journal < 0) {
        return;
    }
    const std::string line = seconds(start.time_since_epoch()) + '\t' +
                             (duration ? seconds(*duration) : "-") + '\t' + t_thread_name + '\t' +
                             call + '\t' + result + '\n';
    // A full disk costs journal lines, not the session: nobody could be told.
    [[maybe_unused]] const ssize_t written = write(g_journal, line.data(), line.size());
}

void name_thread(const char* name) {
    t_thread_name = name;
}

bool on_sdk_thread() {
    return std::strncmp(t_thread_name, "sdk-", 4) == 0;
}

}  // namespace camera_sim
