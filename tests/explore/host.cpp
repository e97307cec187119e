// The host's script.

#include <algorithm>
#include <string_view>

#include "tests/explore/scene.h"
#include "tests/explore/scheduler.h"

namespace explore {

namespace {

// How far the host has read, and what it is looking for.
struct Reading {
    std::size_t read;
    std::size_t looked_at;
};
Reading g_reading;

const char output_pipe = 'p';

bool has_line(const Need& need) {
    const auto wanted = static_cast<Text>(need.number);
    for (; g_reading.looked_at < process.output.size(); ++g_reading.looked_at) {
        if (process.output[g_reading.looked_at].text == wanted) {
            return true;
        }
    }
    return false;
}

Need line_needed(const char* line) {
    Need need;
    need.what = line;
    need.met = has_line;
    need.number = keep(line);
    need.due = never;
    return need;
}

bool has_beginning(const Need& need) {
    const std::string_view beginning(static_cast<const char*>(need.object));
    for (; g_reading.looked_at < process.output.size(); ++g_reading.looked_at) {
        if (std::string_view(text_of(process.output[g_reading.looked_at].text))
                .starts_with(beginning)) {
            return true;
        }
    }
    return false;
}

void await_output(const Need& need, std::size_t from) {
    g_reading.looked_at = from;
    await(need);
    run.self->hash = mix(run.self->hash, process.output[g_reading.looked_at].hash);
    g_reading.read = std::max(g_reading.read, g_reading.looked_at + 1);
}

}  // namespace

void pause(Time length) {
    run.self->idle = false;
    nap(length);
}

void begin_reading() {
    g_reading = Reading{};
}

namespace host {

void write(const char* line) {
    offer();
    const Text text = keep(line);
    run.self->hash = mix(run.self->hash, text);
    process.input.push_back({text, run.self->hash});
    record({.kind = Kind::host_wrote, .text = text});
}

void close_input() {
    offer();
    process.input_closed = true;
    record({.kind = Kind::host_closed});
}

void await(const char* line) {
    await_output(line_needed(line), g_reading.read);
}

void await_anywhere(const char* line) {
    await_output(line_needed(line), 0);
}

void await_beginning(const char* text) {
    Need need;
    need.what = text;
    need.met = has_beginning;
    need.object = text;
    need.due = never;
    await_output(need, g_reading.read);
}

void connect() {
    write("CONNECT");
    await("CONNECTED|MODEL-A");
}

void settle() {
    write("PRIME");
    await("PRIME_DONE|OK");
}

void stop_reading() {
    offer();
    change(object_at(&output_pipe));
    process.output_full = true;
    record({.kind = Kind::host_stopped});
}

void read_again() {
    offer();
    change(object_at(&output_pipe));
    process.output_full = false;
    record({.kind = Kind::host_reads_again});
}

}  // namespace host

}  // namespace explore
