// What the brain is told about the worker's process, a folder that is waited for, and the time of
// day.
#pragma once

#include <cstdint>
#include <string>
#include <variant>

#include "host/values/file_work.h"
#include "host/values/requests.h"
#include "host/values/time.h"

namespace host::brain {

// Each names the run that the worker was started for: news of one that was given up count for
// nothing.
struct WorkerStarted {
    std::string run;
    std::int64_t process = 0;
};

struct WorkerNotStarted {
    std::string run;
    std::string why;
};

// All its lines have been told before.
struct WorkerEnded {
    std::string run;
    WorkerEnd by = WorkerEnd::gone;  // gone: nobody asked it to
    int status = 0;                  // a signal n counts as 128 + n
    std::string last_words{};        // a line on standard error just before, or empty
};

struct WorkerFlooded {
    std::string run;
    std::string what;  // "50,000 lines in 1 s"
};

// A line that was too long to keep, and was not told.
struct LineTooLong {
    std::string run;
};

// It has read none of its input for so long that the pipe is full.
struct WorkerInputFull {
    std::string run;
};

// The virtual camera has announced itself on standard error.
struct CameraIsSimulated {};

// Another program uses the folder that is being opened, and is given time to end.
struct FolderWaitedFor {
    Ticket ticket = 0;  // of its OpenFolder
    Problem problem;    // what it will be if that does not end
};

// Told before anything else, and again whenever pass() is about to be called.
struct TimeOfDayIs {
    TimeOfDay now{};
};

using News = std::variant<WorkerStarted, WorkerNotStarted, WorkerEnded, WorkerFlooded, LineTooLong,
                          WorkerInputFull, CameraIsSimulated, FolderWaitedFor, TimeOfDayIs>;

}  // namespace host::brain
