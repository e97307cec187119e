#include "host/record.h"

#include <string>

#include "host/terminal.h"

namespace tether {

bool Record::open(const std::filesystem::path& file) {
    file_.open(file, std::ios::trunc);
    return file_.is_open();
}

void Record::add(char direction, std::string_view text, host::TimePoint at) {
    if (!file_.is_open()) {
        return;
    }
    file_ << time_column(start_, at) << ' ' << direction << ' '
          << (redacted_ ? redaction_.redact(text) : std::string(text)) << std::endl;
}

}  // namespace tether
