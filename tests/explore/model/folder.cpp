// The download folder.

#include <utility>

#include "tests/explore/model/steps.h"

namespace explore::model {

namespace {

std::string decoded(const std::string& field) {
    static const std::pair<const char*, char> codes[] = {
        {"%25", '%'},  {"%7C", '|'},  {"%7c", '|'}, {"%0A", '\n'},
        {"%0a", '\n'}, {"%0D", '\r'}, {"%0d", '\r'}};
    std::string text;
    for (std::size_t i = 0; i < field.size();) {
        std::size_t taken = 0;
        for (const auto& [code, byte] : codes) {
            if (field.compare(i, 3, code) == 0) {
                text += byte;
                taken = 3;
            }
        }
        if (taken == 0) {
            text += field[i];
            taken = 1;
        }
        i += taken;
    }
    return text;
}

}  // namespace

bool folder(State& state, const Event* event) {
    switch (state.at) {
        case At::set_folder:
            state.folder = keep(decoded(argument(state)));
            return goes_on(state, At::folder_line);
        case At::folder_line:
            return line(state, event, "DOWNLOAD_DIR|" + escaped(decoded(argument(state))),
                        At::folder_looks);
        case At::folder_looks:
            if (!state.connected) {
                return command_done(state);
            }
            go_and_return(state, At::save_info, At::next_command);
            return true;
        case At::save_info:
            return goes_on(state,
                           text_of(state.folder).empty() ? At::no_folder_line : At::save_info_call);
        case At::no_folder_line:
            done(state);
            return logs(state, event, "no download folder yet — shots stay on the camera",
                        state.at);
        case At::save_info_call:
            return calls(state, event, Call::set_save_info, 0, 0, At::save_info_answer,
                         state.handle, state.folder);
        case At::save_info_answer:
            if (!answers(event, Call::set_save_info)) {
                return false;
            }
            if (event->number == 0) {
                return done(state);
            }
            state.result = static_cast<std::uint32_t>(event->number);
            return goes_on(state, At::save_info_error_line);
        default: {
            const std::string code = hex_code(state.result);
            state.result = 0;
            done(state);
            return line(state, event, "ERROR|Could not set the download folder (" + code + ")",
                        state.at);
        }
    }
}

}  // namespace explore::model
