// One line of a record: its time, its mark, its text. The format stands in docs/record.md.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace tether {

// '>' to the worker, '<' from it, '!' its standard error, '#' a remark of whoever keeps the record.
struct RecordLine {
    std::chrono::milliseconds at{};  // since the record began
    char mark = '#';
    std::string text;   // any bytes; a remark may quote a line feed
    bool whole = true;  // false: no line feed followed
};

// Without its line feed. Text is written as it stands; what no text file can hold is written with
// escapes, and marked so.
std::string written(const RecordLine& line);

// Nothing when it is no line of a record.
std::optional<RecordLine> read_record_line(std::string_view text);

}  // namespace tether
