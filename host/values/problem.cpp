#include "host/values/problem.h"

#include <cstdio>

namespace host {

std::string written_sdk_code(std::uint32_t code) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(code));
    return text;
}

}  // namespace host
