#include "host/process/command.h"

#include "host/process/fields.h"

namespace host {

std::string why_not_one_command(std::string_view line) {
    if (line.size() > longest_command) {
        return "the command has " + std::to_string(line.size()) +
               " bytes, and the worker takes at most " + std::to_string(longest_command);
    }
    if (line.find('\n') != std::string_view::npos) {
        return "the command has a line feed in it, and the worker would take two";
    }
    if (line.find('\r') != std::string_view::npos) {
        return "the command has a carriage return in it, which the worker may drop";
    }
    if (line.find('\0') != std::string_view::npos) {
        return "the command has a zero byte in it, where the worker would end it";
    }
    return {};
}

std::optional<std::string> write_command(std::string_view name,
                                         const std::vector<std::string>& arguments,
                                         std::string& error) {
    std::string line(name);
    for (const std::string& argument : arguments) {
        line += "|" + escape_field(argument);
    }
    error = why_not_one_command(line);
    if (!error.empty()) {
        return std::nullopt;
    }
    return line;
}

}  // namespace host
