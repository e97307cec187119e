#include "tests/explore/races.h"

#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <string>

#include "tests/explore/scheduler.h"
#include "tests/explore/worker_memory.h"

namespace explore {

namespace {

// Marks in the shadow, in the place of a fiber's number.
constexpr int freed = 14;
constexpr int several_readers = 15;

// The readers of a byte that several fibers have read without order between them.
struct Readers {
    std::size_t byte;
    Clock clock;
};
constexpr std::uint32_t most_readers = 1U << 16;
Readers g_readers[most_readers];
std::uint32_t g_readers_used = 0;

const void* g_watched = nullptr;

constexpr std::size_t block = 8;
constexpr std::size_t nowhere = ~std::size_t{0};

std::string place_of(const void* address) {
    const char* const byte = static_cast<const char*>(address);
    char text[96];
    if (byte >= worker_memory.data && byte < worker_memory.data + worker_memory.data_size) {
        Dl_info symbol{};
        dladdr(address, &symbol);
        std::snprintf(text, sizeof text, "global %s+%td",
                      symbol.dli_sname != nullptr ? symbol.dli_sname : "data",
                      symbol.dli_sname != nullptr ? byte - static_cast<char*>(symbol.dli_saddr)
                                                  : byte - worker_memory.data);
    } else if (byte < worker_memory.region + heap_size) {
        std::snprintf(text, sizeof text, "heap+%td", byte - worker_memory.region);
    } else {
        const auto fiber =
            static_cast<std::size_t>(byte - worker_memory.region - heap_size) / stack_size;
        std::snprintf(text, sizeof text, "stack of %s, %td below its top", run.fibers[fiber].name,
                      stack_of(static_cast<int>(fiber) + 1) - byte);
    }
    return text;
}

std::string code_at(const void* code) {
    Dl_info symbol{};
    if (dladdr(code, &symbol) == 0) {
        return "unknown code";
    }
    char text[512];
    std::snprintf(text, sizeof text, "%s (library+0x%tx)",
                  symbol.dli_sname != nullptr ? symbol.dli_sname : "a local function",
                  static_cast<const char*>(code) - static_cast<char*>(symbol.dli_fbase));
    return text;
}

[[noreturn]] void tell_race(const void* address, Epoch other, const char* what, const void* code) {
    const std::string place = place_of(address);
    const std::string where = code_at(code);
    if (fiber_of(other) == freed) {
        complain("%s touches freed memory: %s, %s", run.self->name, place.c_str(), where.c_str());
    }
    const char* const whose =
        fiber_of(other) < most_fibers ? run.fibers[fiber_of(other)].name : "several threads";
    complain("data race: %s %s %s without order, in %s", run.self->name, what,
             (place + " touched by " + whose).c_str(), where.c_str());
}

void tell_access(const void* address, std::size_t size, const char* what, const void* code) {
    const char* const byte = static_cast<const char*>(address);
    if (g_watched != nullptr && g_watched >= byte && g_watched < byte + size) {
        std::fprintf(stderr, "  %s %s %zu bytes in %s\n", run.self->name, what, size,
                     code_at(code).c_str());
    }
}

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

inline void check_read(const void* address, std::size_t place, Epoch moment, const void* code) {
    if (!before(worker_memory.written[place], run.self->clock)) {
        tell_race(address, worker_memory.written[place], "reads", code);
    }
    Epoch& read = worker_memory.read[place];
    if (before(read, run.self->clock)) {
        read = moment;
    } else {
        read_after_others(address, place, moment, code);
    }
}

inline void check_write(const void* address, std::size_t place, Epoch moment, const void* code) {
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

// Two bytes' shadows at a time, for the common case that all bytes of an access share one history.
using Pair = std::uint64_t;

inline Pair twice(Epoch moment) {
    return static_cast<Pair>(moment) << 32 | moment;
}

template <std::size_t size>
inline bool alike(const Epoch* shadows) {
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

// An access whose bytes share one history: marks them and is done. False: look at each byte.
template <std::size_t size>
inline bool read_alike(std::size_t place, Epoch moment) {
    const Epoch* const written = worker_memory.written + place;
    Epoch* const read = worker_memory.read + place;
    const Clock& clock = run.self->clock;
    if (!alike<size>(written) || !before(*written, clock) || !alike<size>(read) ||
        !before(*read, clock)) {
        return false;
    }
    fill<size>(read, moment);
    return true;
}

template <std::size_t size>
inline bool write_alike(std::size_t place, Epoch moment) {
    Epoch* const written = worker_memory.written + place;
    const Epoch* const read = worker_memory.read + place;
    const Clock& clock = run.self->clock;
    if (!alike<size>(written) || !before(*written, clock) || !alike<size>(read) ||
        !before(*read, clock)) {
        return false;
    }
    fill<size>(written, moment);
    return true;
}

// True when the access is told, or needs no check.
inline bool unchecked(const void* address, std::size_t size, const char* what, const void* code,
                      std::size_t& place) {
    if (run.self == nullptr) {
        return true;
    }
    if (__builtin_expect(g_watched != nullptr, 0)) {
        tell_access(address, size, what, code);
    }
    place = shadow_of(address, code);
    return place == nowhere;
}

inline Epoch current_moment() {
    return epoch(run.self->number, run.self->clock.at[run.self->number]);
}

}  // namespace

void reads(const void* address, std::size_t size, const void* code) {
    std::size_t place = 0;
    if (size == 0 || unchecked(address, size, "reads", code, place)) {
        return;
    }
    const Epoch moment = current_moment();
    std::size_t i = 0;
    while (i < size) {
        if (i + block <= size && read_alike<block>(place + i, moment)) {
            i += block;
        } else {
            check_read(static_cast<const char*>(address) + i, place + i, moment, code);
            ++i;
        }
    }
}

void writes(const void* address, std::size_t size, const void* code) {
    std::size_t place = 0;
    if (size == 0 || unchecked(address, size, "writes", code, place)) {
        return;
    }
    const Epoch moment = current_moment();
    std::size_t i = 0;
    while (i < size) {
        if (i + block <= size && write_alike<block>(place + i, moment)) {
            i += block;
        } else {
            check_write(static_cast<const char*>(address) + i, place + i, moment, code);
            ++i;
        }
    }
}

template <std::size_t size>
void reads(const void* address, const void* code) {
    std::size_t place = 0;
    if (unchecked(address, size, "reads", code, place)) {
        return;
    }
    const Epoch moment = current_moment();
    if constexpr (size > 1) {
        if (read_alike<size>(place, moment)) {
            return;
        }
    }
    for (std::size_t i = 0; i < size; ++i) {
        check_read(static_cast<const char*>(address) + i, place + i, moment, code);
    }
}

template <std::size_t size>
void writes(const void* address, const void* code) {
    std::size_t place = 0;
    if (unchecked(address, size, "writes", code, place)) {
        return;
    }
    const Epoch moment = current_moment();
    if constexpr (size > 1) {
        if (write_alike<size>(place, moment)) {
            return;
        }
    }
    for (std::size_t i = 0; i < size; ++i) {
        check_write(static_cast<const char*>(address) + i, place + i, moment, code);
    }
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
    for (std::size_t i = 0; place != nowhere && i < size; ++i) {
        const Epoch written = worker_memory.written[place + i];
        if (!before(written, run.self->clock)) {
            tell_race(static_cast<const char*>(address) + i, written, "uses", code);
        }
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

void watch(const void* address) {
    g_watched = address;
}

std::uint32_t marks_used() {
    return g_readers_used + 1;
}

void forget_marks() {
    g_readers_used = 0;
}

}  // namespace explore
