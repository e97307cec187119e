#pragma once

#include <string>
#include <vector>

// The fields of a line: pure functions over bytes, callable anywhere.

// Replaces "%", "|", line feed and carriage return by "%25", "%7C", "%0A" and "%0D"; all other
// bytes stay.
std::string escape_field(const std::string& text);

// The inverse, for either case of the hex letters. A "%" before anything else stays as it is.
std::string decode_field(const std::string& field);

// Splits at every "|": n separators give n + 1 fields, empty ones included.
std::vector<std::string> split_fields(const std::string& line);
