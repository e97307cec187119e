// The table of commands on an SDK that answers anything: any lines, any results, callbacks in the
// middle of calls.

#include "program/dispatch.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "session/sony_worker.h"
#include "tests/worker/fuzz/bytes.h"
#include "tests/worker/fuzz/drawn_sdk.h"
#include "tests/worker/fuzz/instant.h"
#include "tests/worker/fuzz/require.h"
#include "tests/worker/fuzz/taken_output.h"
#include "threads/command_queue.h"

namespace {

using Lines = std::vector<std::string>;

const std::string names[] = {"CONNECT",
                             "DISCONNECT",
                             "PRELOAD",
                             "PRIME",
                             "PUMP_ACTIVE",
                             "PUMP_IDLE",
                             "PUMP_PAUSE",
                             "PUMP_STOP",
                             "SET_DOWNLOAD_DIR",
                             "SET_SAVE_DEST",
                             "SET_SAVE_DESTINATION",
                             "SAVE_DEST",
                             "REMOTE_CAPTURE",
                             "CAPTURE",
                             "REMOTE_CAPTURE_NONAF",
                             "CAPTURE_NONAF",
                             "SET_FILE_TYPE",
                             "__FILETYPE_CHECK",
                             "__CARD_CHECK",
                             "__APPLY_SETTINGS",
                             "__CONNECT_TIMEOUT",
                             "QUIT"};

const std::string words[] = {"disk",       "card", "both", "jpeg", "raw",        "",
                             "/tmp/a%7Cb", "0",    "1",    "2",    "99999999999"};

// As the reader would queue it: a zero byte ends it.
std::string drawn_line(Bytes& bytes) {
    if (bytes.number(7) == 7) {
        return bytes.text(40).c_str();
    }
    std::string line = bytes.one_of(names);
    for (unsigned fields = bytes.number(2); fields > 0; --fields) {
        line += '|';
        line += bytes.number(3) == 3 ? bytes.text(12) : bytes.one_of(words);
    }
    return line.c_str();
}

std::string name_in(const std::string& line) {
    std::string name = line.substr(0, line.find('|'));
    for (char& byte : name) {
        byte = static_cast<char>(std::toupper(static_cast<unsigned char>(byte)));
    }
    return name;
}

bool carry_out(SonyWorker& worker, const std::string& line) REQUIRES(main_thread) {
    const std::string name = name_in(line);
    const bool known = std::find(std::begin(names), std::end(names), name) != std::end(names);
    const unsigned calls = drawn_sdk::calls();
    const bool goes_on = dispatch(worker, line);
    const Lines lines = taken_lines();
    require(goes_on == (name != "QUIT"), "QUIT, and nothing else, ends the loop");
    require((lines == Lines{"ERROR|Unknown command: " + line}) == !known,
            "an unknown command, and no other, is told as it came");
    if (!known || name == "QUIT" || name == "PRIME" || name == "PRELOAD") {
        require(drawn_sdk::calls() == calls, "what needs no camera asks none");
    }
    if (name == "PRIME") {
        require(lines == Lines{"PRIME_DONE|OK"}, "PRIME has one answer");
    }
    return goes_on;
}

// What callbacks and the watchdog have posted.
void carry_out_what_is_queued(SonyWorker& worker) REQUIRES(main_thread) {
    while (const std::optional<std::string> line = next_command()) {
        carry_out(worker, *line);
    }
}

void drop_what_is_queued() REQUIRES(main_thread) {
    while (next_command()) {}
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    take_output();
    end_input();  // so that an empty queue is no reason to wait
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    main_thread.assume();
    Bytes bytes(data, size);
    drawn_sdk::draw_from(bytes);
    SonyWorker worker;
    worker.init();
    taken_lines();
    bool goes_on = true;
    while (goes_on && bytes.left()) {
        switch (bytes.number(7)) {
            case 0:
                drawn_sdk::let_the_camera_act();
                break;
            case 1:
                put_clock_forward(std::chrono::seconds(bytes.number(21)));
                let_the_watchdog_look(worker);
                break;
            case 2:
                carry_out_what_is_queued(worker);
                break;
            default:
                goes_on = carry_out(worker, drawn_line(bytes));
        }
        taken_lines();
    }
    const bool camera_is_quiet = !bytes.left();
    worker.disconnect(true);
    require(taken_lines().empty() || !camera_is_quiet, "the last disconnection is silent");
    sdk::release();
    taken_lines();
    drop_what_is_queued();
    return 0;
}
