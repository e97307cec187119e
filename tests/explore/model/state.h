#pragma once

#include <cstdint>
#include <cstring>

#include "tests/explore/time.h"
#include "tests/explore/trace.h"

// What a worker that keeps the protocol may be doing at one moment: its lines, the calls that it
// makes of the SDK and the order of both, as far as they are fixed. Shares no code with the worker.
namespace explore::model {

// Where the main thread stands: before a line, a call, a pause or a look at what other threads
// change.
enum class At : std::uint8_t {
    banner,
    adapter_line,
    init_call,
    init_answer,
    init_error_line,
    version_call,
    version_answer,
    version_line,
    ready_line,
    next_command,

    plain_reply,  // of a command that has no other effect

    connect,
    looking_line,
    enum_call,
    enum_answer,
    none_found_release,
    none_found_released,
    none_found_log,
    none_found_line,
    camera_line,
    choose,
    none_chosen_release,
    none_chosen_released,
    opening_line,
    arm,
    connect_call,
    connect_answer,
    connect_release_list,
    connect_released_list,
    connect_refused,
    connect_error_line,

    disconnect,
    disconnect_begins,
    disconnect_looks,
    disconnect_call,
    disconnect_answer,
    release_device_call,
    release_device_answer,
    disconnect_clears,
    disconnect_line,

    timed_out,
    timed_out_closes,
    timed_out_call,
    timed_out_answer,

    set_folder,
    folder_line,
    folder_looks,
    save_info,
    no_folder_line,
    save_info_call,
    save_info_answer,
    save_info_error_line,

    set_word,
    store,  // the save destination
    store_priority_done,
    store_priority_line,
    store_card,
    store_second_card,
    store_card_known,
    store_written,
    store_error_line,
    store_fallback_log,
    store_fallback_status,
    store_fallback_line,
    store_log,
    store_line,

    card_check,
    card_check_read,
    card_check_known,
    card_check_line,

    set_file_type,
    file_type_refused_line,  // no session, or no such type
    file_type_written,
    file_type_log,
    file_type_error_log,
    file_type_error_line,
    file_type_check,
    pair,  // report the file type, ask for pairs
    pair_read,
    pair_line,
    pair_written,
    pair_log,

    apply_settings,
    apply_save_info_done,
    apply_store_done,

    capture,
    half_press_call,
    half_press_answer,
    press_call,
    press_answer,
    lift_call,
    lift_answer,
    let_go_call,
    let_go_answer,
    capture_line,

    write_call,
    write_answer,
    write_retry,
    read_call,
    read_answer,
    read_release_call,
    read_release_answer,

    sleeping,

    loop_ended,
    release_call,
    release_answer,
    leaving,
};

// A callback that the SDK is making.
struct Calling {
    std::uint8_t who;  // 0: none
    std::uint8_t which;
    std::uint8_t step;
    std::uint8_t unused;
    Text text;
    std::uint64_t number;

    bool operator==(const Calling&) const = default;
};

inline constexpr int most_queued = 24;
inline constexpr std::uint32_t card_unknown = 2;

// No padding that is not named: states are hashed byte by byte.
struct State {
    Time now;  // of the last event

    // Shared between threads.
    Text queue[most_queued];
    Text input[most_queued];  // written by the host, not yet read
    std::uint32_t queued;
    std::uint32_t inputs;
    std::uint32_t attempt;
    std::uint32_t armed;
    Time deadline;  // at the earliest
    Time deadline_latest;
    Text folder;
    Text camera_name;
    bool connected;
    bool closing;
    bool input_closed;  // by the host
    bool input_over;    // as the reader has found
    bool reading;       // the reader has been started
    bool queue_closed;
    bool late;  // the clock has run ahead of a thread: nothing is prompt any more
    bool pipe_full;

    // The signal thread and the watchdog: 0 asleep, otherwise the next step.
    std::uint32_t pending_signals;
    std::uint32_t signal_number;
    std::uint8_t signal_step;
    bool signal_handled;
    std::uint8_t watchdog_step;
    std::uint8_t unused;
    std::uint32_t watchdog_attempt;
    Calling calling[2];

    // The main thread's own.
    At at;
    At back[3];
    std::uint8_t depth;
    std::uint8_t retries;
    bool quiet;
    bool forced;
    bool card_fallback;
    bool readable;
    std::uint8_t card_present;
    std::uint8_t card_in;
    std::uint32_t index;
    Text command;  // the whole line
    Text word;     // the save destination
    Text list;     // of cameras, as enumerated
    std::uint32_t chosen;
    std::uint32_t code;
    std::uint32_t result;
    std::uint32_t last_enum_error;
    std::uint64_t handle;
    std::uint64_t value;
    std::uint64_t reported_file_type;
    Time wake;
    Time loop_end;

    State() {
        std::memset(static_cast<void*>(this), 0, sizeof *this);
    }
    bool operator==(const State&) const = default;
};

// One step of a thread. Without an event: a step that nobody outside can see, if the thread has
// one to take. With an event: the step that the event is, if the thread is about to take it.
// False: not possible, and the state is spoilt. `until` is the time of the next event, which the
// unseen steps lie before.
bool step_main(State& state, const Event* event, Time until);
bool step_reader(State& state);
bool step_signal_thread(State& state, const Event* event);
bool step_watchdog(State& state, const Event* event, Time until);
bool step_callback(State& state, int slot, const Event* event);

// What has to be seen next of a thread for it to go on; a line of its own can be held up by a full
// pipe, an answer by the camera.
enum class Waits { nothing, line, call, answer };
Waits main_waits_for(const State& state);
bool callback_waits_for_line(const Calling& calling);

// For an internal command, or one of the host's.
void post(State& state, Text line);

bool is_line(const Event* event, const std::string& text);
std::string hex_code(std::uint64_t code);
std::string escaped(const std::string& text);

inline constexpr char log[] = "LOG|[SONY] ";

}  // namespace explore::model
