#include "host/pictures/left_runs.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <thread>
#include <unistd.h>
#include <utility>

#include "host/pictures/disk/listing.h"
#include "host/pictures/disk/regular_file.h"
#include "host/pictures/sweeping.h"
#include "host/process/clock.h"

namespace host::pictures {
namespace {

constexpr std::chrono::milliseconds between_tries{10};
constexpr std::string_view lock_ending = ".lock";

struct LeftRun {
    std::string name;
    Lock own;
    Lock stood_in;  // the lock that the worker holds, when it was moved here from another folder
    LockNote note;
    // The other folder has gone, with the lock in it, and a process of that number runs.
    bool out_of_sight = false;
    int error = 0;  // an errno: nobody knows whether it is held

    const Lock* held() const {
        return own.taken == Taken::held_by_another        ? &own
               : stood_in.taken == Taken::held_by_another ? &stood_in
                                                          : nullptr;
    }
};

bool runs(pid_t process) {
    return process > 0 && (::kill(process, 0) == 0 || errno == EPERM);
}

LeftRun look_at(const Folder& folder, std::string name) {
    LeftRun run;
    run.own = take_existing_lock(folder.incoming.number(), lock_of(name).c_str());
    run.name = std::move(name);
    if (!run.own.file.is_open()) {
        // A lock that is missing, or is no file, is nobody's.
        run.error = run.own.error == ENOENT || run.own.error == EINVAL ? 0 : run.own.error;
        return run;
    }
    run.note = read_note(run.own.file.number());
    if (!run.note.stands_in.empty()) {
        run.stood_in = take_existing_lock(AT_FDCWD, run.note.stands_in.c_str());
        run.out_of_sight = !run.stood_in.file.is_open() && runs(run.note.process);
    }
    return run;
}

void try_again(Lock& lock) {
    if (lock.taken == Taken::held_by_another &&
        ::flock(lock.file.number(), LOCK_EX | LOCK_NB) == 0) {
        lock.taken = Taken::yes;
    }
}

// True: no worker holds any of them any more.
bool await_end(std::vector<LeftRun>& runs, Duration patience, const std::atomic<bool>& hurried) {
    const TimePoint deadline = after(patience);
    for (;;) {
        bool held = false;
        for (LeftRun& run : runs) {
            try_again(run.own);
            try_again(run.stood_in);
            held = held || run.held() != nullptr;
        }
        if (!held || hurried || Clock::now() >= deadline) {
            return !held;
        }
        std::this_thread::sleep_for(between_tries);
    }
}

// Whoever has the file open at this moment: a number alone may have been given to another process.
void signal_holders(const std::vector<LeftRun>& runs, int number) {
    for (const LeftRun& run : runs) {
        if (const Lock* const held = run.held()) {
            for (const pid_t process : processes_with(held->file.number())) {
                ::kill(process, number);
            }
        }
    }
}

Problem still_held(const Folder& folder, const LeftRun& run) {
    pid_t process = run.note.process;
    if (const Lock* const held = run.held()) {
        const std::vector<pid_t> holders = processes_with(held->file.number());
        if (!holders.empty() && std::count(holders.begin(), holders.end(), process) == 0) {
            process = holders.front();
        }
    }
    return {Code::worker_hangs,
            "A worker of before, process " +
                (process > 0 ? std::to_string(process) : std::string("unknown")) +
                ", does not end. What it has brought stays in " + folder.path + "/" +
                incoming_name + "/" + run.name,
            {},
            {}};
}

Problem out_of_reach(const Folder& folder, const std::string& run, int error) {
    return {Code::picture_not_placed,
            "What a worker of before has brought cannot be looked at: " + in_words(error) +
                ". It stays in " + folder.path + "/" + incoming_name + "/" + run,
            {},
            {}};
}

void bring_in(const std::shared_ptr<Folder>& folder, const LeftRun& left, TimeOfDay now,
              Found& found) {
    Run run;
    run.name = left.name;
    run.folder = folder;
    int error = 0;
    run.staging = open_folder(folder->incoming.number(), left.name.c_str(), error);
    struct stat facts {};
    if (error == 0 && ::fstat(run.staging.number(), &facts) != 0) {
        error = errno;
    }
    if (error == 0) {
        run.identity = identity_of(facts);
        Found here = sweep(
            run, true, [](const std::string&) { return false; }, now);
        found.pictures.insert(found.pictures.end(), here.pictures.begin(), here.pictures.end());
        found.problems.insert(found.problems.end(), here.problems.begin(), here.problems.end());
    } else if (error == ENOTDIR || error == ELOOP) {
        return;  // a stranger's
    } else if (error != ENOENT) {
        found.problems.push_back(out_of_reach(*folder, run.name, error));
        return;
    }
    if (remove_staging(run)) {
        remove_lock(*folder, run.name);
    }
}

}  // namespace

void remove_lock(const Folder& folder, const std::string& run) {
    struct stat facts {};
    const std::string name = lock_of(run);
    if (::fstatat(folder.incoming.number(), name.c_str(), &facts, AT_SYMLINK_NOFOLLOW) == 0 &&
        S_ISREG(facts.st_mode)) {
        ::unlinkat(folder.incoming.number(), name.c_str(), 0);
    }
}

int list_runs(const Folder& folder, std::set<std::string>& names) {
    return list_folder(folder.incoming.number(), [&](const char* text) {
        const std::string_view name = text;
        if (name.starts_with(run_prefix)) {
            names.emplace(name.substr(
                0, name.size() - (name.ends_with(lock_ending) ? lock_ending.size() : 0)));
        }
        return true;
    });
}

Found take_over_left_runs(const std::shared_ptr<Folder>& folder, const std::set<std::string>& names,
                          const Options& options, const std::atomic<bool>& hurried, TimeOfDay now) {
    std::vector<LeftRun> runs;
    runs.reserve(names.size());
    for (const std::string& name : names) {
        runs.push_back(look_at(*folder, name));
    }
    if (!await_end(runs, options.before_sigterm, hurried) && !hurried) {
        signal_holders(runs, SIGTERM);
        if (!await_end(runs, options.before_sigkill, hurried)) {
            signal_holders(runs, SIGKILL);
            await_end(runs, options.after_sigkill, hurried);
        }
    }
    Found found;
    for (const LeftRun& run : runs) {
        if (run.held() != nullptr || run.out_of_sight) {
            found.problems.push_back(still_held(*folder, run));
        } else if (run.error != 0) {
            found.problems.push_back(out_of_reach(*folder, run.name, run.error));
        } else {
            bring_in(folder, run, now, found);
        }
    }
    return found;
}

}  // namespace host::pictures
