#include "tests/explore/model/state.h"

#include <cstdio>
#include <cstdlib>

namespace explore::model {

void post(State& state, Text line) {
    if (state.queue_closed) {
        return;
    }
    if (state.queued == most_queued) {
        std::fputs("explore: the model's queue is too short for this scene\n", stderr);
        std::abort();
    }
    state.queue[state.queued++] = line;
}

bool is_line(const Event* event, const std::string& text) {
    return event != nullptr && event->kind == Kind::line && text_of(event->text) == text;
}

std::string hex_code(std::uint64_t code) {
    char text[11];
    std::snprintf(text, sizeof text, "0x%08X", static_cast<std::uint32_t>(code));
    return text;
}

std::string escaped(const std::string& text) {
    std::string result;
    for (const char byte : text) {
        if (byte == '%' || byte == '|' || byte == '\n' || byte == '\r') {
            char code[4];
            std::snprintf(code, sizeof code, "%%%02X", static_cast<unsigned>(byte));
            result += code;
        } else {
            result += byte;
        }
    }
    return result;
}

}  // namespace explore::model
