#include "tests/explore/faults/tours.h"

#include "tests/explore/faults/circumstances.h"

namespace explore {

namespace {

// A hanging call takes a minute, and one that hangs each time many of them.
constexpr Time very_long = Time{24} * 3600 * second;

// Each reaches a state of the session, and there the faults begin.

void opening() {
    host::write("CONNECT");
    host::await("STATUS|Opening camera session");
    switch_faults_on();
}

void connected() {
    host::connect();
    host::settle();
    switch_faults_on();
}

void after_loss() {
    host::connect();
    host::await("DISCONNECTED|");
    host::settle();
    switch_faults_on();
}

// Each is something that a host does next.

void uses_everything() {
    host::write("SET_DOWNLOAD_DIR|/there");
    host::write("SAVE_DEST|card");
    host::write("SET_FILE_TYPE|both");
    host::write("CAPTURE");
    host::write("CONNECT");
    host::settle();
    host::pause(30 * second);
    host::write("SET_DOWNLOAD_DIR|/elsewhere");
    host::write("SAVE_DEST|both");
    host::write("SET_FILE_TYPE|both");
    host::write("__CARD_CHECK");
    host::write("CAPTURE");
    host::settle();
    host::write("DISCONNECT");
    host::settle();
    host::write("QUIT");
}

void uses_everything_anew() {
    host::write("SET_FILE_TYPE|raw");
    host::write("CAPTURE");
    host::write("DISCONNECT");
    uses_everything();
}

void connects_again() {
    host::write("DISCONNECT");
    host::write("CONNECT");
    host::settle();
    host::pause(30 * second);
    host::write("CAPTURE");
    host::settle();
    host::write("CONNECT");
    host::write("DISCONNECT");
    host::close_input();
}

void quits() {
    host::write("QUIT");
}

void waits() {
    host::pause(40 * second);
    host::settle();
    host::close_input();
}

// The camera takes its time to answer, and changes when it is used.
void answer_session(std::size_t number) {
    device::await_connect(number);
    const int handle = camera.open_handle;
    device::pause(5 * second);
    if (camera.open_handle == handle) {
        device::connected();
        device::downloaded("DSC00001.JPG");
        device::pause(second);
        device::properties({0x0106, 0x0708});
    }
}

void camera_that_stays() {
    for (std::size_t number = 1;; ++number) {
        answer_session(number);
    }
}

void camera_that_goes() {
    answer_session(1);
    device::pause(10 * second);
    device::disconnected(0x8208);
    for (std::size_t number = 2;; ++number) {
        answer_session(number);
    }
}

template <void (*reach)(), void (*go_on)()>
void tour() {
    reach();
    go_on();
}

Scene scene(const char* name, const char* proves, void (*host)(), void (*camera)()) {
    return {.name = name,
            .proves = proves,
            .arguments = {"/shots"},
            .answer = answer_with_faults,
            .host = host,
            .camera = camera,
            .longest = very_long};
}

// The faults begin before the worker does.
Scene from_the_start(const char* name, const char* proves, void (*host)()) {
    Scene result = scene(name, proves, host, camera_that_stays);
    result.prepare = switch_faults_on;
    return result;
}

}  // namespace

const std::vector<const Scene*>& fault_tours() {
    static const auto& tours = *new std::vector<Scene>{
        from_the_start("unconnected_used", "An SDK that fails from the start, and all commands.",
                       uses_everything),
        from_the_start("unconnected_reconnected", "An SDK that fails from the start, twice over.",
                       connects_again),
        from_the_start("unconnected_quit", "An SDK that fails from the start to the end.", quits),
        scene("opening_used", "Faults while a session opens, and all commands.",
              tour<opening, uses_everything>, camera_that_stays),
        scene("opening_reconnected", "Faults while a session opens and is given up.",
              tour<opening, connects_again>, camera_that_stays),
        scene("opening_waited", "Faults while a session opens and nobody asks for anything.",
              tour<opening, waits>, camera_that_stays),
        scene("opening_quit", "Faults while a session opens and the worker leaves.",
              tour<opening, quits>, camera_that_stays),
        scene("connected_used", "Faults in a session, and all commands.",
              tour<connected, uses_everything>, camera_that_stays),
        scene("connected_reconnected", "Faults in a session that is closed and opened again.",
              tour<connected, connects_again>, camera_that_stays),
        scene("connected_quit", "Faults in a session when the worker leaves.",
              tour<connected, quits>, camera_that_stays),
        scene("lost_used", "Faults after a loss, and all commands, in a new session too.",
              tour<after_loss, uses_everything_anew>, camera_that_goes),
        scene("lost_reconnected", "Faults after a loss, and a new session.",
              tour<after_loss, connects_again>, camera_that_goes),
        scene("lost_quit", "Faults after a loss when the worker leaves.", tour<after_loss, quits>,
              camera_that_goes),
    };
    static const auto& all = *new std::vector<const Scene*>([] {
        std::vector<const Scene*> result;
        result.reserve(std::size(tours));
        for (const Scene& each : tours) {
            result.push_back(&each);
        }
        return result;
    }());
    return all;
}

}  // namespace explore
