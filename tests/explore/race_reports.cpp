#include "tests/explore/race_reports.h"

#include <cstdio>
#include <dlfcn.h>

#include "tests/explore/scheduler.h"
#include "tests/explore/worker_memory.h"

namespace explore {

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
        const char* const stacks = worker_memory.region + heap_size;
        const std::size_t fiber = static_cast<std::size_t>(byte - stacks) / stack_size;
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

void tell_race(const void* address, Epoch other, const char* what, const void* code) {
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

}  // namespace explore
