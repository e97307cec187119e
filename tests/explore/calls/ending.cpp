// The ways out of the process.

#include <cstdint>
#include <vector>

#include "tests/explore/calls/worker_call.h"
#include "tests/explore/process.h"

namespace explore {

namespace {

struct ExitFunction {
    void (*function)(void*);
    void* argument;
};
std::vector<ExitFunction>& g_exit_functions = *new std::vector<ExitFunction>;
std::size_t g_kept = 0;

bool input_is_free(const Need&) {
    return !process.input_locked;
}

}  // namespace

void keep_exit_functions() {
    g_kept = g_exit_functions.size();
}

void forget_exit_functions() {
    g_exit_functions.resize(g_kept);
}

// exit while other threads run on: first the destructors of global objects, then every stream is
// flushed and unbuffered. Newer C libraries take a stream's lock for that unless told not to.
[[noreturn]] void exit_process(int status) {
    offer();
    for (std::size_t i = g_exit_functions.size(); i > 0; --i) {
        g_exit_functions[i - 1].function(g_exit_functions[i - 1].argument);
        offer();
    }
    Need need;
    need.what = "lock standard input in exit";
    need.met = input_is_free;
    need.due = never;
    await(need);
    close_streams();
    record({.kind = Kind::exits, .number = static_cast<std::uint64_t>(status)});
    end_run(Ending::exited);
}

}  // namespace explore

using namespace explore;

WORKER_CALL int __wrap___cxa_atexit(void (*function)(void*), void* argument, void*) {
    g_exit_functions.push_back({function, argument});
    return 0;
}

WORKER_CALL __attribute__((noreturn)) void __wrap_exit(int status) {
    exit_process(status);
}

WORKER_CALL __attribute__((noreturn)) void __wrap__exit(int status) {
    offer();
    record({.kind = Kind::exits_at_once, .number = static_cast<std::uint64_t>(status)});
    end_run(Ending::cut);
}

// std::terminate and what libstdc++ throws when a container is misused.
WORKER_CALL __attribute__((noreturn)) void __wrap__ZSt9terminatev() {
    complain("%s terminates the process", run.self->name);
}
WORKER_CALL __attribute__((noreturn)) void __wrap__ZSt20__throw_length_errorPKc(const char* what) {
    complain("%s throws a length error: %s", run.self->name, what);
}
WORKER_CALL __attribute__((noreturn)) void __wrap__ZSt19__throw_logic_errorPKc(const char* what) {
    complain("%s throws a logic error: %s", run.self->name, what);
}
WORKER_CALL __attribute__((noreturn)) void __wrap__ZSt24__throw_out_of_range_fmtPKcz(
    const char* what, ...) {
    complain("%s goes out of range: %s", run.self->name, what);
}
WORKER_CALL __attribute__((noreturn)) void __wrap__ZSt20__throw_system_errori(int code) {
    complain("%s throws system error %d", run.self->name, code);
}
WORKER_CALL __attribute__((noreturn)) void __wrap__ZSt17__throw_bad_allocv() {
    complain("%s is out of memory", run.self->name);
}
WORKER_CALL __attribute__((noreturn)) void __wrap__ZSt28__throw_bad_array_new_lengthv() {
    complain("%s is out of memory", run.self->name);
}
