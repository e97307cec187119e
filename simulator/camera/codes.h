#pragma once

// The numbers that the camera and the application exchange. Those of the form 0x51.. and 0x000251..
// are the simulated camera's own: no real camera gives them.

#include "simulator/sdk/surface.h"

namespace camera_sim {

namespace property {
inline constexpr CrInt32u half_press = 0x0001;
inline constexpr CrInt32u file_type = 0x0106;
inline constexpr CrInt32u save_destination = 0x0119;
inline constexpr CrInt32u pc_remote_priority = 0x011A;
inline constexpr CrInt32u pair_transfer = 0x0507;
inline constexpr CrInt32u first_card = 0x0708;
inline constexpr CrInt32u second_card = 0x070D;
}  // namespace property

namespace half_press {
inline constexpr CrInt64u released = 1, pressed = 2;
}
namespace file_type {
inline constexpr CrInt64u jpeg = 1, raw = 2, raw_and_jpeg = 3, raw_and_heif = 4;
}
namespace destination {
inline constexpr CrInt64u computer = 1, card = 2, both = 3;
}
namespace priority {
inline constexpr CrInt64u camera = 1, pc_remote = 2;
}
namespace pair {
inline constexpr CrInt64u both_of_jpeg = 0, developed_half = 1, raw_half = 2, both_of_heif = 3;
}
namespace card_status {
inline constexpr CrInt64u none = 1, in = 2, full = 3;
}

namespace result {
inline constexpr CrInt32u ok = 0;
inline constexpr CrInt32u busy = 0x8402;
inline constexpr CrInt32u no_such_handle = 0x5101;    // 0, or given back, or never given
inline constexpr CrInt32u camera_gone = 0x5102;       // the handle is good, the session is over
inline constexpr CrInt32u session_not_up = 0x5103;    // Connect has not been answered yet
inline constexpr CrInt32u session_taken = 0x5104;     // a handle is out already
inline constexpr CrInt32u no_such_property = 0x5105;  // the camera does not have it
inline constexpr CrInt32u value_refused = 0x5106;     // not a value of this property, or read only
inline constexpr CrInt32u priority_missing = 0x5107;  // PC Remote priority has not been taken
inline constexpr CrInt32u camera_not_there = 0x5108;  // unplugged, asleep, or no object at all
inline constexpr CrInt32u no_such_command = 0x5109;
}  // namespace result

// What OnDisconnected gives.
namespace reason {
inline constexpr CrInt32u asked_for = 0;
inline constexpr CrInt32u unplugged = 0x5111;
}  // namespace reason

// What OnWarning gives.
namespace warning {
inline constexpr CrInt32u reconnecting = 0x00020002;
inline constexpr CrInt32u caution = 0x0002008C;
inline constexpr CrInt32u card_full = 0x00025101;      // no picture taken
inline constexpr CrInt32u buffer_full = 0x00025102;    // no picture taken
inline constexpr CrInt32u no_card = 0x00025103;        // no picture taken
inline constexpr CrInt32u file_not_sent = 0x00025104;  // the computer could not take the file
}  // namespace warning

}  // namespace camera_sim
