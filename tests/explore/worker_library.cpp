#include "tests/explore/worker_library.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <link.h>
#include <vector>

#include "tests/explore/crashes.h"
#include "tests/explore/process.h"
#include "tests/explore/worker_memory.h"

namespace explore {

namespace {

std::vector<char>& g_data = *new std::vector<char>;
std::vector<char>& g_heap = *new std::vector<char>;

// The library's writable segment, without the part that the loader has made read-only.
struct Segment {
    char* base;
    char* low = nullptr;
    char* high = nullptr;
    bool thread_local_data = false;
};

int find_segment(dl_phdr_info* library, std::size_t, void* result) {
    auto& segment = *static_cast<Segment*>(result);
    if (library->dlpi_addr != reinterpret_cast<ElfW(Addr)>(segment.base)) {
        return 0;
    }
    for (int i = 0; i < library->dlpi_phnum; ++i) {
        const ElfW(Phdr)& header = library->dlpi_phdr[i];
        char* const low = segment.base + header.p_vaddr;
        if (header.p_type == PT_LOAD && (header.p_flags & PF_W) != 0) {
            segment.low = std::max(segment.low, low);
            segment.high = low + header.p_memsz;
        } else if (header.p_type == PT_GNU_RELRO) {
            segment.low = std::max(segment.low, low + header.p_memsz);
        } else if (header.p_type == PT_TLS) {
            segment.thread_local_data = true;
        }
    }
    return 1;
}

}  // namespace

bool load_worker(const std::string& path, WorkerLibrary& library) {
    map_worker_memory();
    void* const handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        std::fprintf(stderr, "explore: %s\n", dlerror());
        return false;
    }
    library.main = reinterpret_cast<int (*)(int, char**)>(dlsym(handle, "main"));
    // The library is linked to begin at 0, so it lies at its base.
    Dl_info found{};
    dladdr(reinterpret_cast<void*>(library.main), &found);
    Segment segment{static_cast<char*>(found.dli_fbase)};
    dl_iterate_phdr(find_segment, &segment);
    if (library.main == nullptr || segment.low == nullptr) {
        std::fprintf(stderr, "explore: %s is not the worker\n", path.c_str());
        return false;
    }
    if (segment.thread_local_data) {
        // All fibers share the one system thread's copy.
        std::fprintf(stderr, "explore: %s has thread_local data\n", path.c_str());
        return false;
    }
    map_worker_data(segment.low, static_cast<std::size_t>(segment.high - segment.low));
    g_data.assign(segment.low, segment.high);
    g_heap.assign(worker_memory.region, worker_memory.region + heap_used());
    keep_exit_functions();
    catch_crashes();
    return true;
}

void restore_worker() {
    std::memcpy(worker_memory.data, g_data.data(), g_data.size());
    std::memcpy(worker_memory.region, g_heap.data(), g_heap.size());
    set_heap_used(g_heap.size());
}

}  // namespace explore
