// The framing of the worker's input, said once more and in another way.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

// The commands that these bytes are: pieces of at most 4095 bytes that end at a line feed, each
// without what stands behind a zero byte and without its trailing line ends; empty ones are none.
inline std::vector<std::string> commands_in(std::string_view bytes) {
    constexpr std::size_t longest = 4095;
    std::vector<std::string> commands;
    while (!bytes.empty()) {
        const std::size_t feed = bytes.find('\n');
        const std::size_t line = feed == std::string_view::npos ? bytes.size() : feed + 1;
        std::string command(bytes.substr(0, std::min(line, longest)));
        bytes.remove_prefix(command.size());
        command.resize(std::min(command.size(), command.find('\0')));
        while (!command.empty() && (command.back() == '\n' || command.back() == '\r')) {
            command.pop_back();
        }
        if (!command.empty()) {
            commands.push_back(command);
        }
    }
    return commands;
}
