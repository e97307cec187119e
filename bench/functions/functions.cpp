// The worker's functions one by one, so that a regression shows where it is. Lines go to /dev/null:
// a write there costs the system call and no more. The table goes to stderr.

#include <benchmark/benchmark.h>
#include <cstdio>
#include <iostream>
#include <string>

#include "program/dispatch.h"
#include "protocol/emit.h"
#include "protocol/fields.h"
#include "session/sony_worker.h"
#include "threads/command_queue.h"
#include "threads/main_thread.h"

namespace {

const std::string path = "/Users/me/Pictures/Shots of the day/DSC00001.JPG";
const std::string odd_path = "/Users/me/100% | proofs\n/DSC00001.JPG";

void escape(benchmark::State& state, const std::string& text) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(escape_field(text));
    }
}
BENCHMARK_CAPTURE(escape, path, path);
BENCHMARK_CAPTURE(escape, odd_path, odd_path);

void unescape(benchmark::State& state, const std::string& field) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(decode_field(field));
    }
}
BENCHMARK_CAPTURE(unescape, path, escape_field(path));
BENCHMARK_CAPTURE(unescape, odd_path, escape_field(odd_path));

void split(benchmark::State& state, const std::string& line) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(split_fields(line));
    }
}
BENCHMARK_CAPTURE(split, one_field, "PRELOAD");
BENCHMARK_CAPTURE(split, path, "SET_DOWNLOAD_DIR|" + path);

void emit_line(benchmark::State& state) {
    const std::string line = "DOWNLOADED|" + path;
    for (auto _ : state) {
        emit(line);
    }
}
BENCHMARK(emit_line);

void post_and_take(benchmark::State& state) {
    main_thread.assume();
    for (auto _ : state) {
        post_command("PRELOAD");
        benchmark::DoNotOptimize(next_command());
    }
}
BENCHMARK(post_and_take);

// Without a session the last command of the table does nothing.
void dispatch_line(benchmark::State& state, const std::string& line) {
    main_thread.assume();
    SonyWorker worker;
    for (auto _ : state) {
        dispatch(worker, line);
    }
}
BENCHMARK_CAPTURE(dispatch_line, answered, "PRELOAD");
BENCHMARK_CAPTURE(dispatch_line, silent, "__APPLY_SETTINGS");
BENCHMARK_CAPTURE(dispatch_line, unknown, "no such command");

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv) ||
        std::freopen("/dev/null", "w", stdout) == nullptr) {
        return 1;
    }
    benchmark::ConsoleReporter table(benchmark::ConsoleReporter::OO_None);
    table.SetOutputStream(&std::cerr);
    table.SetErrorStream(&std::cerr);
    benchmark::RunSpecifiedBenchmarks(&table);
}
