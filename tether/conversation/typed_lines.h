// Cuts what is typed, or comes from a file, into lines. An endless line takes no memory.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace tether {

class TypedLines {
  public:
    explicit TypedLines(std::function<void(std::string)> give) : give_(std::move(give)) {}

    void add(std::string_view bytes);

    // The last line needs no line feed.
    void finish();

  private:
    void append(std::string_view bytes);
    void give_line();

    const std::function<void(std::string)> give_;
    std::string line_;
    bool cut_ = false;  // what came behind line_ was dropped
};

}  // namespace tether
