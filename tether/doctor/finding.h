// What the doctor has to say about one thing.
#pragma once

#include <string>

namespace doctor {

enum class Verdict { ok, warning, failure };

// Both texts can be shown as they are: names of files, and what programs say of themselves, may
// hold any bytes and be of any length. Those that no terminal should get are written as \xNN, and
// what is too long to be read is cut.
struct Finding {
    Verdict verdict;
    std::string text;    // one line
    std::string advice;  // what to do about it; may have several lines
};

// As one word of a command to copy.
std::string in_shell_quotes(const std::string& text);

Finding ok(const std::string& text);
Finding warning(const std::string& text, const std::string& advice);
Finding failure(const std::string& text, const std::string& advice);

}  // namespace doctor
