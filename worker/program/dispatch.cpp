// The main loop and the table of commands. Main thread only: a command is finished before the next
// one is taken.

#include "program/dispatch.h"

#include <cctype>
#include <cstddef>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <vector>

#include "protocol/emit.h"
#include "protocol/fields.h"
#include "threads/command_queue.h"

namespace {

using Fields = std::vector<std::string>;

void connect(SonyWorker& worker, const Fields& fields) REQUIRES(main_thread) {
    // An empty word keeps the destination; SET_SAVE_DEST stores it. The difference is meant.
    if (fields.size() >= 2 && !fields[1].empty()) {
        worker.save_destination = fields[1];
    }
    worker.connect();
}

void disconnect(SonyWorker& worker, const Fields&) REQUIRES(main_thread) {
    worker.disconnect(false);
}

void preload(SonyWorker&, const Fields&) {
    emit("PRELOADED|OK");
}

void prime(SonyWorker&, const Fields&) {
    emit("PRIME_DONE|OK");
}

void pump_active(SonyWorker&, const Fields&) {
    emit("PUMP_ACTIVE_READY|OK");
}

void pump_idle(SonyWorker&, const Fields&) {
    emit("PUMP_IDLE_READY|OK");
}

void set_download_dir(SonyWorker& worker, const Fields& fields) REQUIRES(main_thread) {
    worker.set_download_dir(decode_field(fields[1]));
}

void set_save_destination(SonyWorker& worker, const Fields& fields) REQUIRES(main_thread) {
    worker.set_save_destination(fields[1]);
}

void capture(SonyWorker& worker, const Fields&) REQUIRES(main_thread) {
    worker.remote_capture();
}

void set_file_type(SonyWorker& worker, const Fields& fields) REQUIRES(main_thread) {
    worker.set_file_type(fields[1]);
}

void check_file_type(SonyWorker& worker, const Fields&) REQUIRES(main_thread) {
    worker.file_type_check();
}

void check_card(SonyWorker& worker, const Fields&) REQUIRES(main_thread) {
    worker.card_check();
}

void apply_settings(SonyWorker& worker, const Fields&) REQUIRES(main_thread) {
    worker.apply_settings();
}

void connect_timed_out(SonyWorker& worker, const Fields& fields) REQUIRES(main_thread) {
    const unsigned long number = std::strtoul(fields[1].c_str(), nullptr, 10);
    worker.connect_timed_out(static_cast<unsigned int>(number & 0xFFFFFFFFU));
}

struct Command {
    std::string_view name;
    std::size_t least_fields;  // with fewer, the command is skipped without a word
    void (*run)(SonyWorker&, const Fields&);
};

// Names that share an operation are synonyms. QUIT is not here: it ends the loop instead of calling
// something.
constexpr Command commands[] = {
    {"CONNECT", 1, connect},
    {"DISCONNECT", 1, disconnect},
    {"PRELOAD", 1, preload},
    {"PRIME", 1, prime},
    {"PUMP_ACTIVE", 1, pump_active},
    {"PUMP_IDLE", 1, pump_idle},
    {"PUMP_PAUSE", 1, pump_idle},
    {"PUMP_STOP", 1, pump_idle},
    {"SET_DOWNLOAD_DIR", 2, set_download_dir},
    {"SET_SAVE_DEST", 2, set_save_destination},
    {"SET_SAVE_DESTINATION", 2, set_save_destination},
    {"SAVE_DEST", 2, set_save_destination},
    {"REMOTE_CAPTURE", 1, capture},
    {"CAPTURE", 1, capture},
    {"REMOTE_CAPTURE_NONAF", 1, capture},
    {"CAPTURE_NONAF", 1, capture},
    {"SET_FILE_TYPE", 2, set_file_type},
    {"__FILETYPE_CHECK", 1, check_file_type},
    {"__CARD_CHECK", 1, check_card},
    {"__APPLY_SETTINGS", 1, apply_settings},
    {"__CONNECT_TIMEOUT", 2, connect_timed_out},
};

std::string upper_case(std::string name) {
    for (char& byte : name) {
        byte = static_cast<char>(std::toupper(static_cast<unsigned char>(byte)));
    }
    return name;
}

}  // namespace

bool dispatch(SonyWorker& worker, const std::string& line) {
    const Fields fields = split_fields(line);
    const std::string name = upper_case(fields.front());
    if (name == "QUIT") {
        return false;
    }
    for (const Command& command : commands) {
        if (command.name == name) {
            if (fields.size() >= command.least_fields) {
                command.run(worker, fields);
            }
            return true;
        }
    }
    emit("ERROR|Unknown command: " + line);
    return true;
}

void run_main_loop(SonyWorker& worker) {
    while (const std::optional<std::string> line = next_command()) {
        if (!dispatch(worker, *line)) {
            break;
        }
    }
    close_commands();
}
