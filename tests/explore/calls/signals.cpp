// Signals: dispositions, masks, sigwait.

#include <csignal>
#include <cstdint>

#include "tests/explore/calls/worker_call.h"
#include "tests/explore/process.h"

namespace explore {

namespace {

const char pending = 's';

std::uint32_t bits_of(const sigset_t* set) {
    std::uint32_t bits = 0;
    for (int number = 1; number < 32; ++number) {
        bits |= sigismember(set, number) == 1 ? 1U << number : 0;
    }
    return bits;
}

bool is_pending(const Need& need) {
    return (process.pending_signals & static_cast<std::uint32_t>(need.number)) != 0;
}

}  // namespace

void raise_signal(int number) {
    offer();
    change(object_at(&pending));
    record({.kind = Kind::signal, .number = static_cast<std::uint64_t>(number)});
    const std::uint32_t bit = 1U << number;
    if ((process.ignored_signals & bit) != 0) {
        return;  // Linux would keep it while it is blocked, other systems do not
    }
    for (int i = 0; i < run.fiber_count; ++i) {
        const Fiber& fiber = run.fibers[i];
        if (!fiber.worker || !fiber.live || (fiber.blocked_signals & bit) != 0) {
            continue;
        }
        record({.kind = Kind::killed, .number = static_cast<std::uint64_t>(number)});
        end_run(Ending::killed);
    }
    process.pending_signals |= bit;
}

}  // namespace explore

using namespace explore;

WORKER_CALL sighandler_t __wrap_signal(int number, sighandler_t handler) {
    const std::uint32_t bit = 1U << number;
    change(object_at(&pending));
    process.ignored_signals &= ~bit;
    if (handler == SIG_IGN) {
        process.ignored_signals |= bit;
    } else if (handler != SIG_DFL) {
        complain("signal handlers are not modelled");
    }
    return SIG_DFL;
}

WORKER_CALL int __wrap_pthread_sigmask(int how, const sigset_t* set, sigset_t*) {
    offer();
    change(object_at(&pending));
    const std::uint32_t bits = bits_of(set);
    std::uint32_t& blocked = run.self->blocked_signals;
    blocked = how == SIG_BLOCK ? blocked | bits : how == SIG_UNBLOCK ? blocked & ~bits : bits;
    return 0;
}

WORKER_CALL int __wrap_sigwait(const sigset_t* set, int* number) {
    Need need;
    need.what = "take a signal";
    need.met = is_pending;
    need.number = bits_of(set);
    need.due = never;
    await(need);
    change(object_at(&pending));
    *number = __builtin_ctz(process.pending_signals & static_cast<std::uint32_t>(need.number));
    process.pending_signals &= ~(1U << *number);
    return 0;
}
