#pragma once

#include <string>

// Facts about a picture as both file formats write them.

// Null gives an empty text; a very long one is cut, never inside a UTF-8 character, so that the
// entry stays within what readers accept.
std::string entry_text(const char* text);

// "2026:03:01 12:00:00", in UTC; blanks, as EXIF has it for an unknown time, when the year does not
// fit.
std::string entry_time(long long seconds);
