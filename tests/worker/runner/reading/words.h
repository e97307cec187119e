// The small words of the transcript language: texts with escapes, durations, words parted by
// blanks.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/worker/runner/reading/transcript.h"

namespace transcript {

// Takes "quoted text" with \" \\ \n \r \t \xHH off the front.
std::optional<std::string> take_quoted(std::string_view& rest);

// Quoted texts in a row, each as often as a *N behind it says, with {n} counting from 1: "line
// {n}\n" * 1000 "x" * 4095.
std::optional<std::string> read_bytes(std::string_view text);

// 250ms, 2s, 1.5s.
std::optional<Milliseconds> read_duration(std::string_view text);

// Takes "+700ms " off the front when it stands there.
std::optional<Milliseconds> take_pause(std::string_view& rest);

// Bare or quoted words; nothing when a quotation mark is never closed.
std::optional<std::vector<std::string>> read_words(std::string_view text);

// The pieces between commas that stand outside of quoted texts, without the blanks around them.
std::vector<std::string_view> split_list(std::string_view text);

std::string replaced(std::string text, std::string_view what, std::string_view by);

std::string_view trimmed(std::string_view text);

}  // namespace transcript
