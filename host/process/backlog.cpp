#include "host/process/backlog.h"

namespace host {
namespace {

// "65,536"
std::string grouped(std::size_t number) {
    std::string digits = std::to_string(number);
    for (std::size_t left = digits.size(); left > 3;) {
        left -= 3;
        digits.insert(left, 1, ',');
    }
    return digits;
}

}  // namespace

bool Backlog::add(std::string_view bytes, TimePoint at) {
    std::size_t good = 0;  // bytes of whole lines
    std::uint64_t lines = 0;
    bool too_long = false;
    for (std::size_t end; !too_long && (end = bytes.find('\n', good)) != std::string_view::npos;) {
        too_long = (lines == 0 ? unfinished_ : 0) + end - good > limits_.line;
        if (!too_long) {
            good = end + 1;
            ++lines;
        }
    }
    const std::size_t rest = bytes.size() - good;
    too_long = too_long || (lines == 0 ? unfinished_ : 0) + rest > limits_.line;
    if (too_long) {
        if (lines == 0) {
            bytes_.resize(bytes_.size() - unfinished_);
        }
        bytes = bytes.substr(0, good);
    }
    bytes_ += bytes;
    if (lines > 0) {
        whole_lines_ += lines;
        readings_.push_back({forgotten_ + bytes_.size() - (bytes.size() - good), at});
    }
    unfinished_ = too_long ? 0 : (lines == 0 ? unfinished_ : 0) + rest;
    if (too_long) {
        trouble_ = "the worker wrote a line of more than " + grouped(limits_.line) +
                   " bytes and was ended";
    } else if (bytes_.size() - taken_ + readings_.size() * sizeof(Reading) > limits_.backlog) {
        trouble_ =
            "the worker wrote faster than its lines were taken and was ended with more "
            "than " +
            grouped(limits_.backlog) + " bytes waiting";
    }
    return trouble_.empty();
}

void Backlog::finish(TimePoint at) {
    finished_ = at;
}

std::optional<Line> Backlog::take() {
    if (!has_line()) {
        return std::nullopt;
    }
    Line line{{}, {}, whole_lines_ > 0};
    if (line.whole) {
        const std::size_t end = bytes_.find('\n', taken_);
        line.text = bytes_.substr(taken_, end - taken_);
        taken_ = end + 1;
        --whole_lines_;
        line.at = time_of_line_ending_at(forgotten_ + taken_);
    } else {
        line.text = bytes_.substr(taken_);
        taken_ = bytes_.size();
        line.at = *finished_;
    }
    forget_what_was_taken();
    return line;
}

TimePoint Backlog::time_of_line_ending_at(std::uint64_t end) {
    while (readings_.front().end < end) {
        readings_.pop_front();
    }
    const TimePoint at = readings_.front().at;
    if (readings_.front().end == end) {
        readings_.pop_front();
    }
    return at;
}

// Moving what is left to the front costs what it is long, so it must not happen for every line.
void Backlog::forget_what_was_taken() {
    if (taken_ < bytes_.size() && taken_ <= limits_.line + bytes_.size() / 2) {
        return;
    }
    forgotten_ += taken_;
    // A new string, so that the memory of a burst is given back.
    bytes_ = std::string(bytes_, taken_);
    taken_ = 0;
}

}  // namespace host
