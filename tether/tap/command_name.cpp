#include "tether/tap/command_name.h"

#include <algorithm>

#include "tether/explain/wire_texts.h"

namespace tap {

std::string command_of(std::string_view line) {
    line = line.substr(0, line.find('\0'));
    line = line.substr(0, line.find_last_not_of('\r') + 1);
    std::string name(line.substr(0, line.find('|')));
    std::transform(name.begin(), name.end(), name.begin(), [](char byte) {
        return byte >= 'a' && byte <= 'z' ? static_cast<char>(byte - 'a' + 'A') : byte;
    });
    const auto known =
        std::find_if(explain::command_texts.begin(), explain::command_texts.end(),
                     [&](const explain::CommandText& one) { return one.name == name; });
    return known == explain::command_texts.end() ? name : std::string(known->meant);
}

}  // namespace tap
