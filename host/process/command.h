// A command as the worker reads it: one line of at most 4,095 bytes. What is longer would arrive as
// several commands, what stands behind a zero byte would not arrive.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace host {

constexpr std::size_t longest_command = 4095;  // bytes, without the line feed

// Why the worker would not read the line as one command, and whole: a sentence; empty when it
// would.
std::string why_not_one_command(std::string_view line);

// The name and the arguments, escaped, without a line feed; nothing, and the sentence in `error`,
// when the worker would not read them as one command. Only SET_DOWNLOAD_DIR is unescaped by the
// worker, and no other command's words hold anything to escape.
std::optional<std::string> write_command(std::string_view name,
                                         const std::vector<std::string>& arguments,
                                         std::string& error);

}  // namespace host
