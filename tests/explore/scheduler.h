#pragma once

#include <cstdint>

#include "tests/explore/choices.h"
#include "tests/explore/clocks.h"
#include "tests/explore/fibers.h"
#include "tests/explore/objects.h"
#include "tests/explore/time.h"

// One run: fibers that take turns as the choices say, and a clock that moves only when none of them
// can go on.
namespace explore {

// What a fiber needs before it can take its next step.
struct Need {
    const char* what = "go on";
    bool (*met)(const Need&) = nullptr;
    const void* object = nullptr;
    std::int64_t number = 0;
    Time due = 0;  // met by the clock, whatever else; `never` when only `met` counts
};

struct Fiber {
    int number;
    const char* name;
    bool worker;  // a thread of the worker; otherwise a script
    bool live;
    Need need;
    Clock clock;
    std::uint64_t hash;  // everything that this fiber has done and seen
    int locks_held;
    int saved_errno;
    std::uint32_t blocked_signals;
    Time last_nap;
    bool idle;  // has changed nothing since its last nap
    void (*body)(void*);
    void* argument;
    Context context;
};

enum class Ending { exited, cut, killed, stuck, pruned, failed };

struct Run {
    Fiber fibers[most_fibers];
    int fiber_count = 0;
    Fiber* self = nullptr;  // null outside of a run: nothing is scheduled or checked then
    Time now = 0;
    std::uint32_t turns = 0;  // how often somebody had to be picked; the index of a choice
    int jumps_left = 0;
    Time jump_length = 0;
    Time horizon = 0;
    Time time_limit = 0;
    Tick first_tick = 1;    // all that came before this run is known to everybody
    bool thorough = false;  // choose at every step
    Choices* choices = nullptr;
    Ending ending = Ending::exited;
    char complaint[2048] = {};
};

extern Run run;

// The driver's side: runs `main_body` as fiber 0 and all that it starts until the run ends.
// `scripts` starts the fibers beside it.
void carry_out(void (*main_body)(void*), void (*scripts)());

// Everything that decides how this run can go on, for a search that knows states again.
std::uint64_t state_key();

// The same once a run is over: equal for two runs that differ only in the order of steps that do
// not depend on each other.
std::uint64_t run_key();

// The rest is called on fibers.

Fiber& start_fiber(const char* name, bool worker, void (*body)(void*), void* argument);

// A point at which any other fiber may be let through first.
void offer();

// The same, but a search that goes through all schedules leaves it out: what comes next depends on
// no other fiber, or is ordered by a lock that is held.
void offer_if_thorough();

// The same; goes on only when the need is met.
void await(const Need& need);

// Sleeps. A fiber that does nothing but nap and look sleeps on to the next multiple of the
// horizon: a sleep may always last longer, and a loop that polls costs less so.
void nap(Time length);

[[noreturn]] void end_run(Ending ending);

// Ends the run as failed. Only the first complaint of a run is kept.
[[noreturn]] void complain(const char* format, ...) __attribute__((format(printf, 1, 2)));

// How an operation on an object depends on the others: a look or a change.
void look_at(Object& object);
void change(Object& object);

// What the memory model lets one fiber know of another.
void acquire(const Object& object);
void release(Object& object);

}  // namespace explore
