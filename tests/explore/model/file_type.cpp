// The file type, and the settings after a connection, which end with it.

#include "tests/explore/model/steps.h"

namespace explore::model {

namespace {

std::uint64_t value_of_file_type(const std::string& name) {
    return name == "jpeg" ? 1 : name == "raw" ? 2 : name == "both" ? 3 : 0;
}

bool set_file_type(State& state, const Event* event) {
    switch (state.at) {
        case At::set_file_type: {
            const std::uint64_t value = value_of_file_type(argument(state));
            state.quiet = !state.connected;  // remembered for the line
            if (state.quiet || value == 0) {
                return goes_on(state, At::file_type_refused_line);
            }
            write_property(state, 0x0106, value, At::file_type_written);
            return true;
        }
        case At::file_type_refused_line: {
            const std::string text = state.quiet ? "ERROR|Camera not connected"
                                                 : "ERROR|Unknown file type: " + argument(state);
            state.quiet = false;
            state.command = 0;
            return line(state, event, text, At::next_command);
        }
        case At::file_type_written:
            return goes_on(state, state.result == 0 ? At::file_type_log : At::file_type_error_log);
        case At::file_type_log: {
            forget_property(state);
            const bool right =
                logs(state, event, "file type asked of the camera: " + argument(state), At::pair);
            state.forced = true;
            state.back[state.depth++] = At::next_command;
            if (event != nullptr) {
                state.now = event->time;
                sleep(state, 600 * millisecond, At::pair);
            }
            return right;
        }
        case At::file_type_error_log: {
            const std::string code = hex_code(state.result);
            forget_property(state);
            return logs(state, event, "the camera would not change its file type (" + code + ")",
                        At::file_type_error_line);
        }
        default:
            state.forced = true;
            state.back[state.depth++] = At::next_command;
            return line(state, event,
                        "ERROR|The camera would not change its file type — set it on the camera",
                        At::pair);
    }
}

bool report_file_type(State& state, const Event* event) {
    switch (state.at) {
        case At::file_type_check:
            if (!state.connected) {
                return command_done(state);
            }
            state.forced = false;
            go_and_return(state, At::pair, At::next_command);
            return true;
        case At::pair:
            read_property(state, 0x0106, At::pair_read);
            return true;
        case At::pair_read: {
            const std::uint64_t value = state.readable ? state.value : all_ones;
            const bool forced = state.forced;
            state.forced = false;
            forget_property(state);
            if (value == all_ones || (!forced && value == state.reported_file_type)) {
                return done(state);
            }
            state.reported_file_type = value;
            return goes_on(state, At::pair_line);
        }
        case At::pair_line: {
            const std::uint64_t value = state.reported_file_type;
            const char* const word = value == 1   ? "jpeg"
                                     : value == 2 ? "raw"
                                     : value == 3 ? "both"
                                                  : "other";
            if (value == 3 || value == 4) {
                write_property(state, 0x0507, value == 3 ? 0 : 3, At::pair_written);
            } else {
                done(state);
            }
            return line(state, event, std::string("FILE_TYPE|") + word, state.at);
        }
        case At::pair_written:
            return goes_on(state, At::pair_log);
        default: {
            const std::uint32_t result = state.result;
            forget_property(state);
            done(state);
            const std::string text =
                result != 0 ? "could not ask for both halves of a RAW pair (" + hex_code(result) +
                                  ") — the camera sends its own choice"
                : state.reported_file_type == 3
                    ? "RAW+JPEG at the camera — both files come to the computer"
                    : "RAW+HEIF at the camera — both files come to the computer";
            return logs(state, event, text, state.at);
        }
    }
}

}  // namespace

bool file_type(State& state, const Event* event) {
    return state.at < At::file_type_check ? set_file_type(state, event)
                                          : report_file_type(state, event);
}

bool apply_settings(State& state) {
    switch (state.at) {
        case At::apply_settings:
            if (!state.connected) {
                return command_done(state);
            }
            go_and_return(state, At::save_info, At::apply_save_info_done);
            return true;
        case At::apply_save_info_done:
            go_and_return(state, At::store, At::apply_store_done);
            return true;
        default:
            state.forced = true;
            go_and_return(state, At::pair, At::next_command);
            return true;
    }
}

}  // namespace explore::model
