#include "tether/conversation/typed_lines.h"

#include <cstddef>
#include <utility>

#include "host/process/command.h"

namespace tether {
namespace {

// A line that is longer is refused anyway, and one byte too many is enough for that. Behind it may
// stand the carriage returns that do not count.
constexpr std::size_t most_kept = host::longest_command + 64;

}  // namespace

void TypedLines::add(std::string_view bytes) {
    for (std::size_t end; (end = bytes.find('\n')) != std::string_view::npos;) {
        append(bytes.substr(0, end));
        give_line();
        bytes.remove_prefix(end + 1);
    }
    append(bytes);
}

void TypedLines::finish() {
    if (!line_.empty()) {
        give_line();
    }
}

void TypedLines::append(std::string_view bytes) {
    const std::size_t room = most_kept - line_.size();
    cut_ = cut_ || bytes.size() > room;
    line_ += bytes.substr(0, room);
}

// Without the carriage returns of a file from elsewhere: the worker drops them too. Of a line that
// was cut they were not at the end.
void TypedLines::give_line() {
    while (!cut_ && !line_.empty() && line_.back() == '\r') {
        line_.pop_back();
    }
    cut_ = false;
    give_(std::exchange(line_, {}));
}

}  // namespace tether
