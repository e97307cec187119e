#include "tether/doctor/bundle.h"

namespace doctor {

namespace fs = std::filesystem;

Bundle bundle_at(const fs::path& path) {
    std::error_code failure;
    fs::path whole = fs::weakly_canonical(path, failure);
    if (failure) {
        // Behind a folder that is closed or links that lead back: nothing, which is not the
        // current folder.
        whole = fs::absolute(path, failure).lexically_normal();
    }
    if (fs::exists(whole, failure) && !fs::is_directory(whole, failure)) {
        return {whole.parent_path().parent_path(), whole};
    }
    const fs::path contents =
        fs::is_directory(whole / "MacOS", failure) ? whole : whole / "Contents";
    return {contents, contents / "MacOS/sony-worker"};
}

std::string name_in(const Bundle& bundle, const fs::path& file) {
    const fs::path name = file.lexically_normal().lexically_relative(bundle.contents);
    return name.empty() || *name.begin() == ".." ? file.string() : name.string();
}

}  // namespace doctor
