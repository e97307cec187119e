#include "tests/explore/objects.h"

#include <cstdio>
#include <cstdlib>

namespace explore {

namespace {

constexpr std::uint32_t places = 512;

Object g_objects[places];
std::uint32_t g_run = 1;
std::uint32_t g_used = 0;

}  // namespace

Object& object_at(const void* address) {
    const std::uint64_t hash = mix(0, reinterpret_cast<std::uintptr_t>(address));
    for (std::uint64_t place = hash;; ++place) {
        Object& object = g_objects[place % places];
        if (object.run == g_run) {
            if (object.address == address) {
                return object;
            }
            continue;
        }
        if (++g_used > places / 2) {
            std::fputs("explore: too many objects in one run\n", stderr);
            std::abort();
        }
        object.address = address;
        object.run = g_run;
        object.owner = nullptr;
        object.written = hash;
        object.reads = 0;
        object.clock.fill(0);
        return object;
    }
}

void forget_objects() {
    ++g_run;
    g_used = 0;
}

}  // namespace explore
