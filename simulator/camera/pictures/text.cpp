// Text entries of picture files.

#include "simulator/camera/pictures/text.h"

#include <cstdio>
#include <ctime>

namespace {

constexpr std::size_t longest_text = 255;

bool continues_character(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

}  // namespace

std::string entry_text(const char* text) {
    std::string entry = text == nullptr ? "" : text;
    if (entry.size() > longest_text) {
        std::size_t end = longest_text;
        while (end > 0 && continues_character(entry[end])) {
            --end;
        }
        entry.resize(end);
    }
    return entry;
}

std::string entry_time(long long seconds) {
    const auto time = static_cast<std::time_t>(seconds);
    std::tm parts{};
    if (gmtime_r(&time, &parts) == nullptr || parts.tm_year < -1900 || parts.tm_year > 8099) {
        return "    :  :     :  :  ";
    }
    char text[64];
    std::snprintf(text, sizeof text, "%04d:%02d:%02d %02d:%02d:%02d", parts.tm_year + 1900,
                  parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec);
    return text;
}
