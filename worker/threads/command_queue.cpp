#include "threads/command_queue.h"

#include <condition_variable>
#include <deque>
#include <utility>

#include "threads/mutex.h"

namespace {

// Never destroyed: the reader, the signal thread and the SDK's threads post until the process is
// gone.
Mutex& g_cmd_mutex = *new Mutex;
std::condition_variable& g_cmd_cv = *new std::condition_variable;
std::deque<std::string>& g_cmds GUARDED_BY(g_cmd_mutex) = *new std::deque<std::string>;

// Changed under the lock: a wake-up sent between the main thread's look and its sleep would be
// lost, and a worker whose host is gone would stay for ever.
bool g_stdin_open GUARDED_BY(g_cmd_mutex) = true;
bool g_cmds_open GUARDED_BY(g_cmd_mutex) = true;

}  // namespace

bool post_command(std::string line) {
    {
        MutexLock lock(g_cmd_mutex);
        if (!g_cmds_open) {
            return false;
        }
        g_cmds.push_back(std::move(line));
    }
    g_cmd_cv.notify_one();
    return true;
}

void end_input() {
    {
        MutexLock lock(g_cmd_mutex);
        g_stdin_open = false;
    }
    g_cmd_cv.notify_one();
}

std::optional<std::string> next_command() {
    MutexLock lock(g_cmd_mutex);
    while (g_cmds.empty()) {
        if (!g_stdin_open) {
            return std::nullopt;
        }
        g_cmd_mutex.wait(g_cmd_cv);
    }
    std::optional<std::string> line = std::move(g_cmds.front());
    g_cmds.pop_front();
    return line;
}

void close_commands() {
    MutexLock lock(g_cmd_mutex);
    g_cmds_open = false;
    g_cmds.clear();
}
