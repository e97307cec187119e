// The fields of a protocol line, as the host writes and reads them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace host {

// Replaces "%", "|", line feed and carriage return, so that any text can travel as one field.
std::string escape_field(std::string_view text);

// The inverse. Any other "%" sequence stays as it is.
std::string unescape_field(std::string_view field);

// n separators give n+1 fields; empty fields are kept.
std::vector<std::string> split_fields(std::string_view line);

}  // namespace host
