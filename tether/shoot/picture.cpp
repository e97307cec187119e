#include "tether/shoot/picture.h"

#include <algorithm>
#include <system_error>

namespace tether {

namespace fs = std::filesystem;

std::optional<std::uintmax_t> accept(const fs::path& file, const fs::path& folder,
                                     std::string& why) {
    std::error_code missing;
    const fs::path real_folder = fs::canonical(folder, missing);
    const fs::path real_file = fs::canonical(file, missing);
    if (missing || !fs::is_regular_file(real_file, missing)) {
        why = "there is no such file";
        return std::nullopt;
    }
    const auto [folder_end, file_begin] =
        std::mismatch(real_folder.begin(), real_folder.end(), real_file.begin(), real_file.end());
    if (folder_end != real_folder.end()) {
        why = "it lies outside of the folder";
        return std::nullopt;
    }
    const std::uintmax_t bytes = fs::file_size(real_file, missing);
    if (missing) {
        why = "it cannot be read";
        return std::nullopt;
    }
    return bytes;
}

bool is_pair(const fs::path& one, const fs::path& other) {
    return one.stem() == other.stem() && one.extension() != other.extension();
}

}  // namespace tether
