// What the brain wants done, in order.
#pragma once

#include <string>
#include <variant>

#include "host/values/file_work.h"
#include "host/values/requests.h"
#include "host/values/time.h"

namespace host::brain {

// To the worker, with a line feed behind it.
struct Say {
    std::string line;
};

// Answered by WorkerStarted or WorkerNotStarted. Only lines of this worker are told from now on.
struct StartWorker {
    std::string run;
    std::string staging;
    int lock_descriptor = -1;
};

// Up the ladder, so long on each step but the last. Answered by WorkerEnded.
struct EndWorker {
    std::string run;
    Time rung{};
};

struct StateChanged {
    SessionState state;
};

// To be told, and then marked in the ledger as told by who does it.
struct PictureCame {
    Picture picture;
};

// Fired, or over.
struct ShotChanged {
    Shot shot;
};

struct ProblemCame {
    Problem problem;
};

struct Reply {
    RequestId request = 0;
    Answer answer;
};

using Effect = std::variant<Say, StartWorker, EndWorker, FileWork, StateChanged, PictureCame,
                            ShotChanged, ProblemCame, Reply>;

}  // namespace host::brain
