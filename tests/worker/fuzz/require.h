// What a run must keep to.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

// Ends the process where the fuzzer and the debugger see it.
inline void require(bool kept, const std::string& promise) {
    if (!kept) {
        std::fprintf(stderr, "broken: %s\n", promise.c_str());
        std::abort();
    }
}
