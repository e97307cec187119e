#pragma once

// Everything that the simulated SDK and its camera know, in one struct under the one lock. It is
// made anew by each Init and never destroyed.

#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "simulator/camera/body.h"
#include "simulator/camera/shots.h"
#include "simulator/sdk/camera_list.h"
#include "simulator/sdk/faults.h"
#include "simulator/sdk/lock.h"

namespace camera_sim {

// What the scene sets up; the times are those of a camera of today.
struct Setup {
    CrInt32u version = 0x01000000;
    CrInt32 connection_version = 3;
    unsigned seed = 1;
    Duration looking = std::chrono::milliseconds(400);
    Duration opening = std::chrono::milliseconds(1200);
    Duration focus = std::chrono::milliseconds(300);
    Duration exposure = std::chrono::milliseconds(10);
    bool can_focus = true;
    std::uint64_t usb_rate = 40'000'000;  // bytes a second; 0: no limit
    unsigned buffer = 20;                 // shots
    Duration sleep_after{};               // 0: never
    int width = 6000;
    int height = 4000;
};

// How the Connects to come are answered.
struct Answer {
    enum class Kind { normal, held, late, before_return, never, error, disconnected };
    Kind kind = Kind::normal;
    Duration late{};
    CrInt32u code = 0;
};

enum class Stage { idle, opening, open, lost, closed };

struct Session {
    Stage stage = Stage::idle;
    CrDeviceHandle handle = 0;  // 0 in idle only
    std::size_t body = 0;
    unsigned round = 0;         // another one after every change of stage
    Answer answer;              // as it was when Connect was called
    bool reconnecting = false;  // lost: the SDK waits for the camera to come back
    std::string folder;         // empty: none was named
    std::string prefix;
    CrInt32 number = -1;
};

struct LentArray {
    CrDeviceHandle handle;
    std::unique_ptr<CrDeviceProperty[]> properties;
    CrInt32 count;
};

struct State {
    bool started = false;
    bool ending = false;  // Release is under way: nothing new is begun
    bool released = false;
    std::thread::id main_thread;

    Setup setup;
    std::vector<Body> bodies = std::vector<Body>(1);
    bool bodies_named = false;  // the first `camera` replaces the body that is there by default

    Session session;
    CrDeviceHandle last_handle = 0;
    IDeviceCallback* application = nullptr;  // of the latest Connect

    Shooting shooting;

    Answer answer;
    std::vector<Fault> faults;
    unsigned resumes = 0;
    Clock::time_point busy_until{};
    Clock::time_point last_use{};  // of the camera, by the host or at the body
    unsigned sleep_round = 0;      // another one after every `sleep after`
    std::vector<std::string> during_release;
    std::string
        own_pictures;  // the user's folder of pictures to take in turn; empty: they are drawn

    std::vector<CameraList*> lent_lists;
    std::deque<std::unique_ptr<CameraList>> lists;  // lent, and the latest that were handed back
    std::map<const CrDeviceProperty*, LentArray> lent_arrays;
};

State& state() SIM_REQUIRES(g_lock);
void renew_state() SIM_REQUIRES(g_lock);

// Told of everything that somebody may wait for: deliveries, resume, the end of a shot.
extern std::condition_variable& g_changed;

// The body of the session, and without one the body that the latest session had.
Body& body() SIM_REQUIRES(g_lock);

// The state in half a line, for complaints.
std::string describe(const State& state);
const char* to_text(Stage stage);

}  // namespace camera_sim
