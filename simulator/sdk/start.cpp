#include "simulator/sdk/start.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <string_view>
#include <unistd.h>

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

#if defined(__APPLE__)
#include <crt_externs.h>
#endif

namespace camera_sim {
namespace {

constexpr const char* journal_variable = "CAMERA_SIM_JOURNAL";
constexpr const char* scene_variable = "CAMERA_SIM_SCENE";
constexpr const char* pictures_variable = "CAMERA_SIM_PICTURES";
constexpr const char* control_variable = "CAMERA_SIM_CONTROL";

const char* variable(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr && *value != '\0' ? value : nullptr;
}

// A name with a slip in it would leave the camera as it is, and nobody would know why.
void tell_unknown_variables() {
    constexpr std::string_view ours = "CAMERA_SIM_";
    constexpr const char* known[] = {scene_variable, control_variable, journal_variable,
                                     pictures_variable};
#if defined(__APPLE__)
    char** entry = *_NSGetEnviron();  // a library there has no name for it
#else
    char** entry = environ;
#endif
    for (; *entry != nullptr; ++entry) {
        const std::string_view text = *entry;
        const std::string name(text.substr(0, text.find('=')));
        if (text.substr(0, ours.size()) == ours &&
            std::find(std::begin(known), std::end(known), name) == std::end(known)) {
            std::string sentence = name + " means nothing to the virtual camera, which knows";
            for (const char* one : known) {
                sentence += std::string(" ") + one;
            }
            tell(sentence);
        }
    }
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
    tell_unknown_variables();
    if (const char* path = variable(journal_variable)) {
        open_journal(path);
    }
    if (const char* path = variable(scene_variable)) {
        play_scene(path);
    }
    if (const char* path = variable(pictures_variable)) {
        state().own_pictures = path;
    }
    if (const char* path = variable(control_variable)) {
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
