#include "tether/rpc/messages.h"

#include <algorithm>
#include <utility>

namespace rpc {

void Messages::add(std::string_view bytes) {
    bytes_.erase(0, begin_);
    searched_ -= begin_;
    begin_ = 0;
    bytes_.append(bytes);
}

void Messages::finish() {
    finished_ = true;
}

std::string Messages::take(std::size_t length) {
    std::string taken = bytes_.substr(begin_, length);
    begin_ = std::min(begin_ + length + 1, bytes_.size());
    searched_ = begin_;
    return taken;
}

std::optional<Message> Messages::next() {
    while (true) {
        const std::size_t end = bytes_.find('\n', searched_);
        const bool whole = end != std::string::npos;
        const std::size_t length = (whole ? end : bytes_.size()) - begin_;
        searched_ = begin_ + length;
        if (std::exchange(skipping_, skipping_ && !whole)) {
            take(length);
            if (!whole) {
                return std::nullopt;
            }
            continue;
        }
        // Said at once: a client that never ends its line would wait for ever.
        if (length > longest_message) {
            skipping_ = !whole;
            take(length);
            return Message{{}, true};
        }
        if (whole || (finished_ && length > 0)) {
            return Message{take(length), false};
        }
        return std::nullopt;
    }
}

}  // namespace rpc
