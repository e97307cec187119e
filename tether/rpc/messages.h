// Cuts what a client writes into messages, one a line. An endless line takes no memory.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace rpc {

constexpr std::size_t longest_message = std::size_t{1} << 20;  // bytes, without the line feed

struct Message {
    std::string text;
    bool too_long = false;  // its text is lost
};

class Messages {
  public:
    // Whole messages are taken with next() before more is added.
    void add(std::string_view bytes);

    // Nothing follows: what came without a line feed is a message too.
    void finish();

    std::optional<Message> next();

  private:
    std::string take(std::size_t length);

    std::string bytes_;
    std::size_t begin_ = 0;     // of what has not been taken
    std::size_t searched_ = 0;  // no line feed from begin_ to here
    bool skipping_ = false;     // inside a line that was too long
    bool finished_ = false;
};

}  // namespace rpc
