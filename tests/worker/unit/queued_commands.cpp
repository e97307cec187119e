#include "tests/worker/unit/queued_commands.h"

#include <optional>

#include "threads/command_queue.h"

std::vector<std::string> queued_commands() {
    const std::string end = "(end of what was queued)";
    post_command(end);
    std::vector<std::string> lines;
    for (std::optional<std::string> line = next_command(); line && *line != end;
         line = next_command()) {
        lines.push_back(*line);
    }
    return lines;
}
