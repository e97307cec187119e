#include "tests/explore/search/processes.h"

#include <cstdio>
#include <cstdlib>
#include <map>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace explore {

void in_processes(std::size_t count, std::size_t jobs,
                  const std::function<void(std::size_t, Findings&)>& work,
                  const std::function<void(std::size_t, const Findings&)>& tell) {
    void* const memory = mmap(nullptr, count * sizeof(Findings), PROT_READ | PROT_WRITE,
                              MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        std::perror("explore: mmap");
        std::exit(2);
    }
    auto* const findings = static_cast<Findings*>(memory);
    std::map<pid_t, std::size_t> running;
    std::size_t next = 0;
    while (next < count || !running.empty()) {
        if (next < count && running.size() < jobs) {
            std::fflush(nullptr);
            const pid_t child = fork();
            if (child == 0) {
                work(next, findings[next]);
                std::fflush(nullptr);
                _exit(0);
            }
            if (child < 0) {
                std::perror("explore: fork");
                std::exit(2);
            }
            running[child] = next++;
            continue;
        }
        int status = 0;
        const auto ended = running.find(waitpid(-1, &status, 0));
        if (ended == running.end()) {
            continue;
        }
        Findings& found = findings[ended->second];
        if (status != 0 && !found.failed) {
            found.failed = true;
            std::snprintf(found.complaint, sizeof found.complaint,
                          "the exploring process ended with wait status %d", status);
        }
        tell(ended->second, found);
        running.erase(ended);
    }
    munmap(memory, count * sizeof(Findings));
}

}  // namespace explore
