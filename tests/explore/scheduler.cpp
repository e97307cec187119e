#include "tests/explore/scheduler.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "tests/explore/races.h"
#include "tests/explore/trace.h"
#include "tests/explore/worker_memory.h"

namespace explore {

Run run;

namespace {

constexpr std::uint32_t most_turns = 100'000;

Context g_driver;

bool ready(const Need& need) {
    return run.now >= need.due || (need.met != nullptr && need.met(need));
}

[[noreturn]] void give_up(const char* why) {
    std::string text = why;
    for (int i = 0; i < run.fiber_count; ++i) {
        const Fiber& fiber = run.fibers[i];
        if (fiber.live) {
            text += std::string("; ") + fiber.name + " wants to " + fiber.need.what;
        }
    }
    std::snprintf(run.complaint, sizeof run.complaint, "%s", text.c_str());
    end_run(Ending::stuck);
}

// Who takes the next step. Without an offer the running fiber goes on if it can.
Fiber& pick(bool offered) {
    for (;;) {
        Options options{0, run.self->number, false};
        Time earliest = never;
        for (int i = 0; i < run.fiber_count; ++i) {
            const Fiber& fiber = run.fibers[i];
            if (!fiber.live) {
                continue;
            }
            if (ready(fiber.need)) {
                options.ready |= 1U << i;
            } else {
                earliest = std::min(earliest, fiber.need.due);
            }
        }
        if (++run.turns > most_turns) {
            give_up("no end in sight");
        }
        if (options.ready == 0) {
            if (earliest == never) {
                give_up("deadlock");
            }
            if (earliest > run.time_limit) {
                give_up("nothing happens any more");
            }
            run.now = earliest;
            continue;
        }
        options.jump = run.jumps_left > 0 && earliest != never;
        const bool alone = (options.ready & (options.ready - 1)) == 0;
        if ((alone && !options.jump) || (!offered && options.current_ready())) {
            return run.fibers[options.usual()];
        }
        const int choice = run.choices->decide(run.turns, options);
        if (choice == stop_here) {
            end_run(Ending::pruned);
        }
        if (choice != jump_ahead) {
            return run.fibers[choice];
        }
        record({.kind = Kind::clock_jumps});
        --run.jumps_left;
        run.now = std::max(earliest, run.now + run.jump_length);
    }
}

void hand_over(bool offered) {
    Fiber& from = *run.self;
    Fiber& to = pick(offered);
    if (&to != &from) {
        from.saved_errno = errno;
        run.self = &to;
        errno = to.saved_errno;
        to.context.resume(from.context);
    }
    // A step further, whatever it does.
    from.hash = mix(from.hash, 1);
}

void fiber_entry() {
    Fiber& self = *run.self;
    self.body(self.argument);
    self.live = false;
    hand_over(true);
    std::abort();
}

}  // namespace

void carry_out(void (*main_body)(void*), void (*scripts)()) {
    Tick last = run.first_tick + marks_used();
    forget_marks();
    for (int i = 0; i < run.fiber_count; ++i) {
        last = std::max(last, run.fibers[i].clock.at[i]);
    }
    run.first_tick = last + 1;
    if (last > last_tick / 2) {
        std::fill_n(worker_memory.written, region_size + worker_memory.data_size, 0);
        std::fill_n(worker_memory.read, region_size + worker_memory.data_size, 0);
        run.first_tick = 1;
    }
    forget_objects();
    run.fiber_count = 0;
    run.now = 0;
    run.turns = 0;
    run.complaint[0] = '\0';
    run.ending = Ending::exited;
    start_fiber("main", true, main_body, nullptr);
    scripts();
    run.self = &run.fibers[0];
    run.self->context.resume(g_driver);
}

std::uint64_t state_key() {
    const auto turn = static_cast<std::uint64_t>(run.self->number) +
                      32U * static_cast<std::uint64_t>(run.jumps_left);
    return mix(run_key(), turn);
}

std::uint64_t run_key() {
    std::uint64_t key = static_cast<std::uint64_t>(run.now);
    for (int i = 0; i < run.fiber_count; ++i) {
        key += mix(run.fibers[i].hash, static_cast<std::uint64_t>(i));
    }
    return key;
}

Fiber& start_fiber(const char* name, bool worker, void (*body)(void*), void* argument) {
    if (run.fiber_count == most_fibers) {
        std::fputs("explore: too many threads\n", stderr);
        std::abort();
    }
    const int number = run.fiber_count++;
    Fiber& fiber = run.fibers[number];
    Fiber* const parent = run.self;
    fiber.number = number;
    fiber.name = name;
    fiber.worker = worker;
    fiber.live = true;
    fiber.need = Need{};
    fiber.hash = mix(static_cast<std::uint64_t>(number), 1);
    fiber.locks_held = 0;
    fiber.saved_errno = 0;
    fiber.blocked_signals = 0;
    fiber.last_nap = 0;
    fiber.idle = false;
    fiber.body = body;
    fiber.argument = argument;
    if (parent != nullptr) {
        fiber.clock = parent->clock;
        fiber.blocked_signals = parent->blocked_signals;
        parent->hash = mix(parent->hash, 1);
        fiber.hash = mix(parent->hash, fiber.hash);
        ++parent->clock.at[parent->number];
    } else {
        fiber.clock.fill(run.first_tick);
    }
    fiber.clock.at[number] = run.first_tick + 1;
    fiber.context.prepare(stack_of(number), stack_size, fiber_entry);
    return fiber;
}

void offer() {
    run.self->need = Need{};
    hand_over(true);
}

void offer_if_thorough() {
    run.self->need = Need{};
    hand_over(run.thorough);
}

void await(const Need& need) {
    run.self->need = need;
    hand_over(true);
}

void nap(Time length) {
    Fiber& self = *run.self;
    Time due = run.now + length;
    if (self.idle && self.last_nap == length && run.horizon > 0) {
        due = (due + run.horizon - 1) / run.horizon * run.horizon;
    }
    self.last_nap = length;
    self.hash = mix(self.hash, static_cast<std::uint64_t>(due));
    Need need;
    need.what = "wake up";
    need.due = due;
    await(need);
    self.hash = mix(self.hash, static_cast<std::uint64_t>(run.now));
    self.idle = true;
}

void end_run(Ending ending) {
    run.ending = ending;
    Fiber& self = *run.self;
    run.self = nullptr;
    g_driver.resume(self.context);
    std::abort();
}

void complain(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(run.complaint, sizeof run.complaint, format, arguments);
    va_end(arguments);
    if (run.self == nullptr) {
        std::fprintf(stderr, "explore: before the run: %s\n", run.complaint);
        std::abort();
    }
    end_run(Ending::failed);
}

void look_at(Object& object) {
    Fiber& self = *run.self;
    self.hash = mix(self.hash, object.written);
    object.reads += self.hash;
}

void change(Object& object) {
    Fiber& self = *run.self;
    self.hash = mix(self.hash, object.written + mix(object.reads, 2));
    object.written = self.hash;
    object.reads = 0;
    self.idle = false;
}

void acquire(const Object& object) {
    run.self->clock.join(object.clock);
}

void release(Object& object) {
    Fiber& self = *run.self;
    object.clock.join(self.clock);
    ++self.clock.at[self.number];
}

}  // namespace explore
