#pragma once

#include <cstdint>
#include <vector>

#include "tests/explore/time.h"
#include "tests/explore/trace.h"

namespace SCRSDK {
class IDeviceCallback;
}

// The camera behind the SDK's functions: what it is set to, and how it answers.
namespace explore {

inline constexpr std::uint32_t busy = 0x8402;

struct CameraOnBus {
    const char* model;     // null: it gives none
    const char* type;      // null: unknown
    bool missing = false;  // the list has null in its place
};

struct CameraProperty {
    std::uint32_t code;
    std::uint64_t value;
    bool readable;
};

// One call of an SDK function, and the answer that a scene wants it to get.
struct Asked {
    Call call;
    std::uint32_t code;   // of a property
    std::uint64_t value;  // to be set; the parameter of a command
    int times;            // how often this function has been called, this call included
};
enum class Odd : std::uint8_t {
    no,
    null,             // success without the object
    empty,            // success with an object of nothing, or a handle that is none
    lent_on_failure,  // a failure that lends or writes something all the same
    missing_camera,   // null in the list
    nameless_camera,  // without a model and a type
    unreadable,
    other_value,
    all_ones,
    ignored,  // success without effect
};
struct Answer {
    std::uint32_t result = 0;
    Time late = 0;  // how long the call takes
    Odd odd = Odd::no;

    bool operator==(const Answer&) const = default;
};

struct Camera {
    std::vector<CameraOnBus> on_bus;
    std::vector<CameraOnBus> listed;  // as the list that is lent has them
    std::vector<CameraProperty> properties;
    Answer (*answer)(const Asked&);
    bool release_waits;  // Release returns only when no callback is running

    SCRSDK::IDeviceCallback* callback;
    int handles_given;
    int open_handle;  // 0: none
    bool initialised;
    bool released;
    bool list_lent;
    bool array_lent;
    bool gone;  // the cable has been pulled
    int callbacks_running;
    std::vector<std::uint64_t> begun[call_count];  // everything that led to each call
    std::vector<std::uint64_t> connects;           // the same for each Connect that was accepted
};

extern Camera camera;

// One camera over USB with a card in, answering everything at once with success.
void begin_camera();

CameraProperty& property_of(std::uint32_t code);

// The object that calls and changes of properties meet at.
extern const char camera_state;
extern const char camera_sessions;

}  // namespace explore
