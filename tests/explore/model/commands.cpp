// Taking a command from the queue, and those that only answer.

#include <algorithm>
#include <cctype>

#include "tests/explore/model/steps.h"

namespace explore::model {

namespace {

std::string reply_to(const std::string& name) {
    static const std::pair<const char*, const char*> replies[] = {
        {"PRELOAD", "PRELOADED|OK"},
        {"PRIME", "PRIME_DONE|OK"},
        {"PUMP_ACTIVE", "PUMP_ACTIVE_READY|OK"},
        {"PUMP_IDLE", "PUMP_IDLE_READY|OK"},
        {"PUMP_PAUSE", "PUMP_IDLE_READY|OK"},
        {"PUMP_STOP", "PUMP_IDLE_READY|OK"}};
    for (const auto& [command, reply] : replies) {
        if (name == command) {
            return reply;
        }
    }
    return "";
}

bool takes_picture(const std::string& name) {
    return name == "REMOTE_CAPTURE" || name == "CAPTURE" || name == "REMOTE_CAPTURE_NONAF" ||
           name == "CAPTURE_NONAF";
}

std::string name_of(const std::string& command) {
    std::string name = fields_of(command)[0];
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char byte) { return static_cast<char>(std::toupper(byte)); });
    return name;
}

}  // namespace

std::vector<std::string> fields_of(const std::string& text) {
    std::vector<std::string> fields(1);
    for (const char byte : text) {
        if (byte == '|') {
            fields.emplace_back();
        } else {
            fields.back() += byte;
        }
    }
    return fields;
}

std::string argument(const State& state) {
    const std::vector<std::string> fields = fields_of(text_of(state.command));
    return fields.size() > 1 ? fields[1] : "";
}

bool begin_command(State& state) {
    state.command = state.queue[0];
    --state.queued;
    std::memmove(state.queue, state.queue + 1, sizeof(Text) * state.queued);
    state.queue[state.queued] = 0;

    const std::string& command = text_of(state.command);
    const std::string name = name_of(command);
    const std::vector<std::string> fields = fields_of(command);
    static const struct {
        const char* name;
        std::size_t fields;
        At at;
    } commands[] = {{"CONNECT", 1, At::connect},
                    {"DISCONNECT", 1, At::disconnect},
                    {"SET_DOWNLOAD_DIR", 2, At::set_folder},
                    {"SET_SAVE_DEST", 2, At::set_word},
                    {"SET_SAVE_DESTINATION", 2, At::set_word},
                    {"SAVE_DEST", 2, At::set_word},
                    {"REMOTE_CAPTURE", 1, At::capture},
                    {"CAPTURE", 1, At::capture},
                    {"REMOTE_CAPTURE_NONAF", 1, At::capture},
                    {"CAPTURE_NONAF", 1, At::capture},
                    {"SET_FILE_TYPE", 2, At::set_file_type},
                    {"__FILETYPE_CHECK", 1, At::file_type_check},
                    {"__CARD_CHECK", 1, At::card_check},
                    {"__APPLY_SETTINGS", 1, At::apply_settings},
                    {"__CONNECT_TIMEOUT", 2, At::timed_out},
                    {"QUIT", 1, At::loop_ended}};
    state.at = At::plain_reply;
    for (const auto& row : commands) {
        if (name == row.name) {
            if (fields.size() < row.fields) {
                return command_done(state);
            }
            state.at = row.at;
        }
    }
    return true;
}

bool plain_reply(State& state, const Event* event) {
    const std::string& command = text_of(state.command);
    const std::string name = name_of(command);
    const std::string reply = name == "CONNECT"     ? "CONNECTED|already"
                              : takes_picture(name) ? "ERROR|Camera not connected"
                                                    : reply_to(name);
    state.command = 0;
    return line(state, event, reply.empty() ? "ERROR|Unknown command: " + command : reply,
                At::next_command);
}

}  // namespace explore::model
