// Lines to the host. Runs on whatever thread has something to say.

#include "protocol/emit.h"

#include <cstdio>

#include "threads/mutex.h"

namespace {

// Never destroyed: detached threads write until the process is gone.
Mutex& g_out_mutex = *new Mutex;

}  // namespace

void emit(const std::string& line) {
    MutexLock lock(g_out_mutex);
    std::fputs(line.c_str(), stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
}

void emit_log(const std::string& text) {
    emit("LOG|[SONY] " + text);
}

std::string hex_code(std::uint32_t code) {
    char text[sizeof "0x00000000"];
    std::snprintf(text, sizeof text, "0x%08X", code);
    return text;
}

void close_output() {
    g_out_mutex.lock();
}
