// A picture that the worker has reported, and whether it may be believed.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "host/process/clock.h"

namespace tether {

struct Picture {
    std::filesystem::path file;
    std::uintmax_t bytes = 0;
    host::Duration took{};  // from the CAPTURE to the report
};

// The size of the file when it exists inside the folder, wherever symbolic links lead; otherwise
// nothing, and why.
std::optional<std::uintmax_t> accept(const std::filesystem::path& file,
                                     const std::filesystem::path& folder, std::string& why);

// Whether two files are the halves of one RAW pair: the same name with different extensions.
bool is_pair(const std::filesystem::path& one, const std::filesystem::path& other);

}  // namespace tether
