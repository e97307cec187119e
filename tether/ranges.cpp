#include "tether/ranges.h"

#include <cstdlib>

namespace tether {

CLI::Validator in(const Range& range) {
    return CLI::Validator(
        [&range](std::string& text) {
            char* end = nullptr;
            const double value = std::strtod(text.c_str(), &end);
            const bool good = text.find_first_not_of(range.digits) == std::string::npos &&
                              end != text.c_str() && *end == '\0' && value >= range.least &&
                              value <= range.most;
            return good ? std::string()
                        : std::string("needs a number from ") + range.words + ", not " + text;
        },
        "");
}

std::string type_of(const Range& range) {
    return std::string(range.kind) + " from " + range.words;
}

}  // namespace tether
