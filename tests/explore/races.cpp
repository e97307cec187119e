#include "tests/explore/races.h"

#include <cstring>

#include "tests/explore/race_reports.h"
#include "tests/explore/scheduler.h"
#include "tests/explore/worker_memory.h"

namespace explore {

namespace {

// The readers of a byte that several fibers have read without order between them.
struct Readers {
    std::size_t byte;
    Clock clock;
};
constexpr std::uint32_t most_readers = 1U << 16;
Readers g_readers[most_readers];
std::uint32_t g_readers_used = 0;

constexpr std::size_t block = 8;
constexpr std::size_t nowhere = ~std::size_t{0};

// The place of a byte in the shadow; nowhere when it needs no check.
inline std::size_t shadow_of(const void* address, const void* code) {
    const auto byte = reinterpret_cast<std::uintptr_t>(address);
    std::size_t place = byte - reinterpret_cast<std::uintptr_t>(worker_memory.region);
    if (place < region_size) {
        if (place < heap_size) {
            return place;
        }
        const std::size_t fiber = (place - heap_size) / stack_size;
        const std::size_t below_top = stack_size - (place - heap_size) % stack_size;
        if (fiber == 0 && below_top <= shared_stack) {
            return place;
        }
        if (fiber != static_cast<std::size_t>(run.self->number)) {
            complain("%s touches the %s, in %s", run.self->name, place_of(address).c_str(),
                     code_at(code).c_str());
        }
        return nowhere;
    }
    place = byte - reinterpret_cast<std::uintptr_t>(worker_memory.data);
    return place < worker_memory.data_size ? region_size + place : nowhere;
}

Readers* readers_of(Epoch mark, std::size_t byte) {
    const std::uint32_t index = tick_of(mark) - run.first_tick - 1;
    return index < g_readers_used && g_readers[index].byte == byte ? &g_readers[index] : nullptr;
}

[[gnu::noinline]] void read_after_others(const void* address, std::size_t byte, Epoch moment,
                                         const void* code) {
    Epoch& last = worker_memory.read[byte];
    Fiber& self = *run.self;
    if (fiber_of(last) == several_readers) {
        if (Readers* const readers = readers_of(last, byte)) {
            readers->clock.at[self.number] = tick_of(moment);
            return;
        }
    }
    if (g_readers_used == most_readers) {
        complain("too many shared bytes, at %s in %s", place_of(address).c_str(),
                 code_at(code).c_str());
    }
    Readers& readers = g_readers[g_readers_used++];
    readers.byte = byte;
    readers.clock.fill(0);
    readers.clock.at[fiber_of(last)] = tick_of(last);
    readers.clock.at[self.number] = tick_of(moment);
    last = epoch(several_readers, run.first_tick + g_readers_used);
}

inline void mark_read(const void* address, std::size_t byte, Epoch moment, const void* code) {
    Epoch& read = worker_memory.read[byte];
    if (before(read, run.self->clock)) {
        read = moment;
    } else {
        read_after_others(address, byte, moment, code);
    }
}

[[gnu::noinline]] void write_after_others(const void* address, std::size_t byte, const void* code) {
    const Epoch last = worker_memory.read[byte];
    const Clock& clock = run.self->clock;
    if (fiber_of(last) == several_readers) {
        const Readers* const readers = readers_of(last, byte);
        for (int i = 0; readers != nullptr && i < most_fibers; ++i) {
            if (readers->clock.at[i] > clock.at[i]) {
                tell_race(address, epoch(i, readers->clock.at[i]), "writes", code);
            }
        }
    } else if (!before(last, clock)) {
        tell_race(address, last, "writes", code);
    }
}

// Two bytes' shadows at a time, for the common case that all bytes of an access share one history.
using Pair = std::uint64_t;

inline Pair twice(Epoch moment) {
    return static_cast<Pair>(moment) << 32 | moment;
}

template <std::size_t size>
inline bool share_history(const Epoch* shadows) {
    const Pair wanted = twice(shadows[0]);
    Pair difference = 0;
    for (std::size_t i = 0; i < size; i += 2) {
        Pair pair;
        std::memcpy(&pair, shadows + i, sizeof pair);
        difference |= pair ^ wanted;
    }
    return difference == 0;
}

template <std::size_t size>
inline void fill(Epoch* shadows, Epoch moment) {
    const Pair pair = twice(moment);
    for (std::size_t i = 0; i < size; i += 2) {
        std::memcpy(shadows + i, &pair, sizeof pair);
    }
}

// The two kinds of access. `alike` takes bytes that share one history and marks them; false: look
// at each byte, with `check`.
struct Reading {
    template <std::size_t size>
    static bool alike(std::size_t place, Epoch moment) {
        const Epoch* const written = worker_memory.written + place;
        Epoch* const read = worker_memory.read + place;
        const Clock& clock = run.self->clock;
        if (!share_history<size>(written) || !before(*written, clock) ||
            !share_history<size>(read) || !before(*read, clock)) {
            return false;
        }
        fill<size>(read, moment);
        return true;
    }

    static void check(const void* address, std::size_t place, Epoch moment, const void* code) {
        if (!before(worker_memory.written[place], run.self->clock)) {
            tell_race(address, worker_memory.written[place], "reads", code);
        }
        mark_read(address, place, moment, code);
    }
};

struct Writing {
    template <std::size_t size>
    static bool alike(std::size_t place, Epoch moment) {
        Epoch* const written = worker_memory.written + place;
        const Epoch* const read = worker_memory.read + place;
        const Clock& clock = run.self->clock;
        if (!share_history<size>(written) || !before(*written, clock) ||
            !share_history<size>(read) || !before(*read, clock)) {
            return false;
        }
        fill<size>(written, moment);
        return true;
    }

    static void check(const void* address, std::size_t place, Epoch moment, const void* code) {
        const Clock& clock = run.self->clock;
        Epoch& written = worker_memory.written[place];
        if (written != moment && !before(written, clock)) {
            tell_race(address, written, "writes", code);
        }
        if (worker_memory.read[place] != moment && !before(worker_memory.read[place], clock)) {
            write_after_others(address, place, code);
        }
        written = moment;
    }
};

// Otherwise `place` is where its shadow begins.
inline bool unchecked(const void* address, const void* code, std::size_t& place) {
    if (run.self == nullptr) {
        return true;
    }
    place = shadow_of(address, code);
    return place == nowhere;
}

inline Epoch current_moment() {
    return epoch(run.self->number, run.self->clock.at[run.self->number]);
}

template <typename Access>
void check_range(const void* address, std::size_t size, const void* code) {
    std::size_t place = 0;
    if (size == 0 || unchecked(address, code, place)) {
        return;
    }
    const Epoch moment = current_moment();
    std::size_t i = 0;
    while (i < size) {
        if (i + block <= size && Access::template alike<block>(place + i, moment)) {
            i += block;
        } else {
            Access::check(static_cast<const char*>(address) + i, place + i, moment, code);
            ++i;
        }
    }
}

template <typename Access, std::size_t size>
inline void check_access(const void* address, const void* code) {
    std::size_t place = 0;
    if (unchecked(address, code, place)) {
        return;
    }
    const Epoch moment = current_moment();
    if constexpr (size > 1) {
        if (Access::template alike<size>(place, moment)) {
            return;
        }
    }
    for (std::size_t i = 0; i < size; ++i) {
        Access::check(static_cast<const char*>(address) + i, place + i, moment, code);
    }
}

}  // namespace

void reads(const void* address, std::size_t size, const void* code) {
    check_range<Reading>(address, size, code);
}

void writes(const void* address, std::size_t size, const void* code) {
    check_range<Writing>(address, size, code);
}

template <std::size_t size>
void reads(const void* address, const void* code) {
    check_access<Reading, size>(address, code);
}

template <std::size_t size>
void writes(const void* address, const void* code) {
    check_access<Writing, size>(address, code);
}

template void reads<1>(const void*, const void*);
template void reads<2>(const void*, const void*);
template void reads<4>(const void*, const void*);
template void reads<8>(const void*, const void*);
template void reads<16>(const void*, const void*);
template void writes<1>(const void*, const void*);
template void writes<2>(const void*, const void*);
template void writes<4>(const void*, const void*);
template void writes<8>(const void*, const void*);
template void writes<16>(const void*, const void*);

void touches(const void* address, std::size_t size, const void* code) {
    if (run.self == nullptr) {
        return;
    }
    const std::size_t place = shadow_of(address, code);
    const Epoch moment = current_moment();
    for (std::size_t i = 0; place != nowhere && i < size; ++i) {
        const char* const byte = static_cast<const char*>(address) + i;
        const Epoch written = worker_memory.written[place + i];
        if (!before(written, run.self->clock)) {
            tell_race(byte, written, "uses", code);
        }
        mark_read(byte, place + i, moment, code);
    }
}

void forbid(const void* address, std::size_t size, const void* code) {
    if (run.self == nullptr || size == 0) {
        return;
    }
    writes(address, size, code);
    const std::size_t place = shadow_of(address, code);
    for (std::size_t i = 0; place != nowhere && i < size; ++i) {
        worker_memory.written[place + i] = epoch(freed, run.first_tick + 1);
    }
}

std::uint32_t marks_used() {
    return g_readers_used + 1;
}

void forget_marks() {
    g_readers_used = 0;
}

}  // namespace explore
