#include "bench/measure/machine.h"

#include <fstream>
#include <sys/utsname.h>

#include "bench/measure/cores.h"

#if defined(__GLIBC__)
#include <gnu/libc-version.h>
#endif

namespace {

std::string processor() {
    std::ifstream lines("/proc/cpuinfo");
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind("model name", 0) == 0) {
            return line.substr(line.find(':') + 2);
        }
    }
    return "unknown";
}

}  // namespace

std::vector<std::pair<std::string, std::string>> describe_machine() {
    utsname system{};
    uname(&system);
    std::vector<std::pair<std::string, std::string>> words{
        {"Processor", processor()},
        {"Cores", std::to_string(cores())},
        {"Kernel", std::string(system.sysname) + " " + system.release + ", " + system.machine},
        {"Compiler", BENCH_COMPILER},
    };
#if defined(__GLIBC__)
    words.emplace_back("C library", std::string("glibc ") + gnu_get_libc_version());
#endif
    return words;
}
