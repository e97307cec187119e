#include "simulator/sdk/start.h"

#include <cstdlib>

#include "simulator/camera/state.h"
#include "simulator/camera/timeline.h"
#include "simulator/camera/transfer.h"
#include "simulator/control/scene/language.h"
#include "simulator/control/socket.h"
#include "simulator/sdk/call.h"
#include "simulator/sdk/delivery.h"
#include "simulator/sdk/journal.h"
#include "simulator/sdk/lending.h"
#include "simulator/sdk/strictness.h"

namespace camera_sim {
namespace {

const char* variable(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr && *value != '\0' ? value : nullptr;
}

// Without a Connect nobody is there to be called.
void run_lines_of_release() SIM_REQUIRES(g_lock) {
    if (state().application == nullptr) {
        return;
    }
    const std::vector<std::string> lines = state().during_release;  // a line may add to them
    for (const std::string& line : lines) {
        if (const std::string error = run_line(line); !error.empty()) {
            stop(std::string("during Release ").append(line).append(": ").append(error));
        }
    }
}

}  // namespace

bool start(Hold& hold, CrInt32u log_type) {
    if (state().started) {
        stop("Init was called twice");
    }
    renew_state();
    state().started = true;
    state().main_thread = std::this_thread::get_id();
    name_thread("main");
    open_delivery();
    tell("simulated SDK, no real camera is driven");
    if (const char* path = variable("CAMERA_SIM_JOURNAL")) {
        open_journal(path);
    }
    if (const char* path = variable("CAMERA_SIM_SCENE")) {
        play_scene(path);
    }
    if (const char* path = variable("CAMERA_SIM_PICTURES")) {
        state().own_pictures = path;
    }
    if (const char* path = variable("CAMERA_SIM_CONTROL")) {
        listen_for_control(path);
    }
    Call call(hold, "Init", std::to_string(log_type));
    if (!call.answer_bool(true)) {
        end(hold);
        ended();
        return false;
    }
    return true;
}

void end(Hold& hold) {
    expect_nothing_lent("Release");
    run_lines_of_release();
    state().ending = true;
    end_timeline(hold);
    end_transfer(hold);
    end_delivery(hold);
}

void ended() {
    stop_control();
    close_journal();
    state().started = false;
    state().released = true;
    state().application = nullptr;
    g_changed.notify_all();
}

}  // namespace camera_sim
