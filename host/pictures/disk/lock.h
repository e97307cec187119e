// Locks that end with the process that holds them: flock() on a file of our own.
#pragma once

#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

#include "host/process/pipe.h"

namespace host::pictures {

enum class Taken { yes, held_by_another, no };

struct Lock {
    Taken taken = Taken::no;
    int error = 0;  // with Taken::no
    Descriptor file;
};

// Makes the file where there is none. Does not wait. With Taken::held_by_another the file is open
// all the same.
Lock take_lock(int folder, const char* name);

// The same for a file that must exist: ENOENT otherwise.
Lock take_existing_lock(int folder, const char* name);

// What a run's lock file says.
struct LockNote {
    pid_t process = 0;      // the worker's number; 0: not started yet
    std::string stands_in;  // path of the lock that the worker really holds; empty: this one
};

// An errno, or 0.
int write_note(int lock, const LockNote& note);
LockNote read_note(int lock);

// The processes, this one excepted, that have this file open for writing: those that can hold its
// lock. A number that the system has given to another process meanwhile is not among them. Of
// other users' processes nothing is seen.
std::vector<pid_t> processes_with(int lock);

}  // namespace host::pictures
