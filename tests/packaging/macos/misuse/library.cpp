// Text of a number with a fraction: in the C++ library since macOS 13.3.
#include <charconv>

bool newer_library(char* text, double number) {
#if defined(MISUSE)
    return std::to_chars(text, text + 40, number).ec == std::errc();
#else
    return std::to_chars(text, text + 40, static_cast<int>(number)).ec == std::errc();
#endif
}
