// Cuts what comes out of a worker into lines. An endless line takes no memory.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace host {

class LineCutter {
  public:
    // `longest`: bytes of one line, without its line feed.
    explicit LineCutter(std::size_t longest) : longest_(longest) {}

    // Calls line(text) for each line that ends in these bytes, without its line feed, and
    // too_long() once for each that has more bytes than may be kept.
    template <typename OnLine, typename OnTooLong>
    void cut(std::string_view bytes, const OnLine& line, const OnTooLong& too_long) {
        for (std::size_t end; (end = bytes.find('\n')) != std::string_view::npos;) {
            const std::string_view last = bytes.substr(0, end);
            bytes.remove_prefix(end + 1);
            keep(last, too_long);
            if (!skipping_) {
                line(std::string_view(begun_));
            }
            begun_.clear();
            skipping_ = false;
        }
        keep(bytes, too_long);
    }

  private:
    template <typename OnTooLong>
    void keep(std::string_view bytes, const OnTooLong& too_long) {
        if (!skipping_ && begun_.size() + bytes.size() > longest_) {
            skipping_ = true;
            too_long();
        }
        if (!skipping_) {
            begun_ += bytes;
        }
    }

    std::size_t longest_;
    std::string begun_;      // a line that has not ended yet
    bool skipping_ = false;  // to the end of a line that is too long
};

}  // namespace host
