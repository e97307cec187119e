// A capture from the request to its last file.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/brain/session/fence.h"
#include "host/brain/times.h"
#include "host/values/file_work.h"
#include "host/values/requests.h"
#include "host/values/settings.h"
#include "host/values/shot.h"

namespace host::brain {

struct ShotInHand {
    // waiting: for its turn or for the session. looking: at the folder. firing: CAPTURE is said.
    enum class Step { waiting, looking, firing, waiting_for_files };

    Shot shot;
    RequestId request = 0;
    std::string name;
    Time patience{};
    Time expires{};
    Step step = Step::waiting;
    Time give_up_turn = never;  // not fired by then: refused
    Ticket look = 0;

    Fence::Number fence = 0;
    Time fired{};
    Time from{};            // patience counts from here: the shutter, or the latest file
    bool captured = false;  // REMOTE_CAPTURED was heard
    std::optional<SaveDestination> destination;  // in force when it was fired
    std::optional<FileType> type;                // the same; nothing: not known

    std::string stem;  // the camera's, once a file is its own
    // Files that may be late ones of the shot before: all of one stem.
    std::string doubted_stem;
    Time doubted_until = never;

    std::optional<Problem> lost_by;  // only what was reported before still counts

    std::optional<std::uint32_t> caution;  // the last code that the camera gave since it was fired
};

}  // namespace host::brain
