// Who has a lock file open, as the system tells it.
#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "host/pictures/disk/identity.h"
#include "host/pictures/disk/listing.h"
#include "host/pictures/disk/lock.h"
#if defined(__APPLE__)
#include <libproc.h>
#include <sys/fcntl.h>
#endif

namespace host::pictures {
namespace {

#if defined(__APPLE__)
std::vector<pid_t> all_processes() {
    std::vector<pid_t> processes(
        static_cast<std::size_t>(std::max(0, ::proc_listallpids(nullptr, 0))) + 64);
    const int count =
        ::proc_listallpids(processes.data(), static_cast<int>(processes.size() * sizeof(pid_t)));
    processes.resize(static_cast<std::size_t>(std::max(0, count)));
    return processes;
}

bool has_open(pid_t process, const Identity& file) {
    const int bytes = ::proc_pidinfo(process, PROC_PIDLISTFDS, 0, nullptr, 0);
    std::vector<proc_fdinfo> open(static_cast<std::size_t>(std::max(0, bytes)) /
                                  sizeof(proc_fdinfo));
    const int got = ::proc_pidinfo(process, PROC_PIDLISTFDS, 0, open.data(),
                                   static_cast<int>(open.size() * sizeof(proc_fdinfo)));
    open.resize(static_cast<std::size_t>(std::max(0, got)) / sizeof(proc_fdinfo));
    for (const proc_fdinfo& one : open) {
        vnode_fdinfo node{};
        if (one.proc_fdtype == PROX_FDTYPE_VNODE &&
            ::proc_pidfdinfo(process, one.proc_fd, PROC_PIDFDVNODEINFO, &node, sizeof node) ==
                static_cast<int>(sizeof node) &&
            node.pvi.vi_stat.vst_dev == file.device && node.pvi.vi_stat.vst_ino == file.inode &&
            (node.pfi.fi_openflags & FWRITE) != 0) {
            return true;
        }
    }
    return false;
}
#else
std::vector<pid_t> all_processes() {
    std::vector<pid_t> processes;
    const Descriptor folder(::open("/proc", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    list_folder(folder.number(), [&](const char* name) {
        if (const int number = std::atoi(name); number > 0) {
            processes.push_back(number);
        }
        return true;
    });
    return processes;
}

// "flags:" in octal, on the second line.
bool open_for_writing(const std::string& facts) {
    std::ifstream lines(facts);
    std::string name;
    while (lines >> name) {
        if (name == "flags:") {
            int flags = 0;
            lines >> std::oct >> flags;
            return (flags & O_ACCMODE) != O_RDONLY;
        }
    }
    return false;
}

bool has_open(pid_t process, const Identity& file) {
    const std::string place = "/proc/" + std::to_string(process);
    const Descriptor folder(::open((place + "/fd").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    bool found = false;
    list_folder(folder.number(), [&](const char* name) {
        struct stat facts {};
        found = ::fstatat(folder.number(), name, &facts, 0) == 0 && identity_of(facts) == file &&
                open_for_writing(place + "/fdinfo/" + name);
        return !found;
    });
    return found;
}
#endif

}  // namespace

std::vector<pid_t> processes_with(int lock) {
    std::vector<pid_t> holders;
    struct stat facts {};
    if (::fstat(lock, &facts) != 0) {
        return holders;
    }
    for (const pid_t process : all_processes()) {
        if (process != ::getpid() && has_open(process, identity_of(facts))) {
            holders.push_back(process);
        }
    }
    return holders;
}

}  // namespace host::pictures
