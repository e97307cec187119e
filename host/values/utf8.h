// Names in text. A name is bytes; JSON, and a worker's folder, are UTF-8 only.
#pragma once

#include <string>
#include <string_view>

namespace host {

bool is_utf8(std::string_view text);

// Valid UTF-8: "%", and each byte that is no part of a character, as "%" and two hexadecimal
// digits.
std::string escape_bytes(std::string_view bytes);

// The inverse. Any other "%" stays as it is.
std::string unescape_bytes(std::string_view text);

}  // namespace host
