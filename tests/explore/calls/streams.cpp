// Standard input and output.

#include <cstdio>
#include <cstring>
#include <stdio_ext.h>

#include "tests/explore/calls/worker_call.h"
#include "tests/explore/process.h"
#include "tests/explore/races.h"

namespace explore {

namespace {

// Names for the streams among the objects.
const char standard_output = 'o';

bool has_input(const Need&) {
    return process.input_read < process.input.size() || process.input_closed;
}

bool has_room(const Need&) {
    return !process.output_full;
}

// Two threads that use the stream without order between them would tear each other's lines, whether
// or not they did so now.
void use_output(const char* operation, const void* code) {
    static Epoch& last = *new Epoch;
    static std::uint32_t& last_run = *new std::uint32_t;
    Fiber& self = *run.self;
    if (self.locks_held == 0) {
        offer();
    } else {
        offer_if_thorough();
    }
    if (last_run == run.first_tick && !before(last, self.clock)) {
        complain("%s and %s write to standard output without order (%s at %p)", self.name,
                 run.fibers[fiber_of(last)].name, operation, code);
    }
    last_run = run.first_tick;
    last = epoch(self.number, self.clock.at[self.number]);
}

void put(const char* text, std::size_t length) {
    Fiber& self = *run.self;
    if (!process.buffer.empty() && process.buffer_writer != self.number) {
        complain("%s and %s write into one line", run.fibers[process.buffer_writer].name,
                 self.name);
    }
    process.buffer.append(text, length);
    process.buffer_writer = self.number;
}

// Everything up to the last line feed goes out as lines.
void send_lines() {
    std::size_t start = 0;
    for (std::size_t end = process.buffer.find('\n'); end != std::string::npos;
         end = process.buffer.find('\n', start)) {
        const Text text = keep(std::string_view(process.buffer).substr(start, end - start));
        change(object_at(&standard_output));
        process.output.push_back({text, run.self->hash});
        record({.kind = Kind::line, .text = text});
        start = end + 1;
    }
    process.buffer.erase(0, start);
}

}  // namespace

void close_streams() {
    use_output("exit", nullptr);
    if (!process.buffer.empty()) {
        complain("the process exits with half a line: %s", process.buffer.c_str());
    }
}

}  // namespace explore

using namespace explore;

WORKER_CALL char* __wrap_fgets(char* buffer, int size, FILE* stream) {
    if (stream != stdin) {
        complain("%s reads something else than standard input", run.self->name);
    }
    process.input_locked = process.input_lockable;
    Need need;
    need.what = "read a line";
    need.met = has_input;
    need.due = never;
    await(need);
    process.input_locked = false;
    Fiber& self = *run.self;
    if (process.input_read == process.input.size()) {
        self.hash = mix(self.hash, process.input_read);
        return nullptr;
    }
    const Sent& line = process.input[process.input_read++];
    self.hash = mix(self.hash, line.hash);
    self.idle = false;
    const std::string& text = text_of(line.text);
    if (text.size() + 2 > static_cast<std::size_t>(size)) {
        complain("a scene's line is too long");
    }
    writes(buffer, text.size() + 2, CALLER);
    text.copy(buffer, text.size());
    std::memcpy(buffer + text.size(), "\n", 2);
    return buffer;
}

WORKER_CALL int __wrap_fputs(const char* text, FILE*) {
    const std::size_t length = std::strlen(text);
    reads(text, length + 1, CALLER);
    use_output("fputs", CALLER);
    put(text, length);
    return 0;
}

WORKER_CALL int __wrap_fputc(int byte, FILE*) {
    use_output("fputc", CALLER);
    const char character = static_cast<char>(byte);
    put(&character, 1);
    return byte;
}

WORKER_CALL int __wrap_fflush(FILE*) {
    use_output("fflush", CALLER);
    if (process.output_full) {
        Need need;
        need.what = "write to the full pipe";
        need.met = has_room;
        need.due = never;
        await(need);
    }
    send_lines();
    return 0;
}

WORKER_CALL int __wrap___fsetlocking(FILE* stream, int type) {
    if (stream == stdin && type != FSETLOCKING_QUERY) {
        process.input_lockable = type != FSETLOCKING_BYCALLER;
    }
    return 0;
}
