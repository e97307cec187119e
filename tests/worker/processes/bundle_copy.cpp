#include "tests/worker/processes/bundle_copy.h"

#include "host/process/beside_this_program.h"

namespace fs = std::filesystem;

BundleCopy::BundleCopy(const std::string& name) {
    fs::create_directories(folder() / name);
    contents_ = folder() / name / "Contents";
    const fs::path original = host::worker_beside_this_program().parent_path().parent_path();
    fs::copy(original, contents_, fs::copy_options::recursive);
}

fs::path BundleCopy::folder() const {
    return top_.path();
}

fs::path BundleCopy::contents() const {
    return contents_;
}

fs::path BundleCopy::worker() const {
    return contents_ / "MacOS/sony-worker";
}
