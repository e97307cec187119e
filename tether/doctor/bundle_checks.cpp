// What lies where in the bundle, and what the worker will find of it.
#include <algorithm>
#include <unistd.h>

#include "tether/doctor/checks.h"
#include "tether/doctor/regular_file.h"
#include "tether/doctor/sdk_library.h"

namespace doctor {

namespace fs = std::filesystem;

namespace {

const std::string build_it = "Build it: cmake --build BUILD-TREE --target sony-worker";
const std::string copy_the_sdk =
    "The library belongs in Contents/Frameworks/SonySDK: build again, or install with "
    "cmake --install.";

bool lies_in_an_application(const Bundle& bundle) {
    return bundle.contents.parent_path().extension() == ".app";
}

const Image* image_for(const ProgramFile& program, const std::string& processor) {
    for (const Image& image : program.images) {
        if (image.processor == processor) {
            return &image;
        }
    }
    return nullptr;
}

// One for each processor, mostly the same for all.
Finding sdk_of_image(const Bundle& bundle, const ProgramFile& worker, const Image& image) {
    const auto called = sdk_library_name(image);
    if (!called) {
        return warning("SDK library: the worker names none",
                       "Either the SDK is linked into the worker, or it was built without one.");
    }
    const fs::path library = sdk_library(bundle, image, *called);
    const std::string name = name_in(bundle, library);
    if (const std::string why = why_unreadable(library); !why.empty()) {
        return failure("SDK library: " + name + " " + why, copy_the_sdk);
    }
    const auto program = read_program_file(library);
    if (!program || program->format != worker.format || !image_for(*program, image.processor)) {
        return failure("SDK library: " + name + " is " +
                           (program ? "for " + describe(*program) : "no library") +
                           ", the worker for " + describe(worker),
                       "Take the SDK for the system and processor of the worker.");
    }
    if (fs::path(*called).is_absolute()) {
        return warning("SDK library: " + *called + ", wherever the bundle is",
                       "It will be missing elsewhere. The library must call itself by its mere "
                       "name, on a Mac @rpath/libCr_Core.dylib.");
    }
    if (is_simulated(library)) {
        const std::string text = "SDK library: " + name + ", simulated: the virtual camera";
        return lies_in_an_application(bundle)
                   ? warning(text, "No real camera will ever be found. Build with SONY_SDK_ROOT.")
                   : ok(text);
    }
    if (name == library.string()) {
        return warning("SDK library: " + name + ", the maker's, outside of the bundle",
                       "It will be missing elsewhere. " + copy_the_sdk);
    }
    return ok("SDK library: " + name + ", the maker's");
}

}  // namespace

Finding worker_is_there(const Bundle& bundle, const std::optional<ProgramFile>& program) {
    const std::string name = "worker: " + bundle.worker.string();
    const std::string why = why_unreadable(bundle.worker);
    std::error_code nowhere;
    if (!why.empty() && !fs::is_regular_file(bundle.worker, nowhere)) {
        return failure(name + " " + why, build_it);
    }
    if (why.empty() && !program && access(bundle.worker.c_str(), X_OK) != 0) {
        return failure(name + " is no program of Linux or macOS, and not executable", build_it);
    }
    if (access(bundle.worker.c_str(), X_OK) != 0) {
        return failure(name + " is not executable", "chmod +x " + in_shell_quotes(bundle.worker));
    }
    if (!why.empty()) {
        return warning(name + " " + why,
                       "It may start all the same; what it loads cannot be seen.");
    }
    if (!program) {
        return warning(name + " is no program of Linux or macOS, maybe a script",
                       "What it loads cannot be seen.");
    }
    return ok(name + ", for " + describe(*program));
}

Finding run_path_is_right(const ProgramFile& worker) {
    const std::string right = right_run_path(worker.format);
    for (const Image& image : worker.images) {
        const auto& paths = image.run_paths;
        std::string written;
        for (const std::string& path : paths) {
            written += (written.empty() ? "" : ", ") + path;
        }
        const std::string text =
            "run path: " + (paths.empty() ? "none" : written) + ", should be " + right;
        if (std::find(paths.begin(), paths.end(), right) == paths.end()) {
            return failure(text,
                           "The loader will not find the SDK. Build again with CMake, which "
                           "sets it.");
        }
        if (paths.size() > 1) {
            return warning(text, "Another SDK may be found in the other places.");
        }
    }
    return ok("run path: " + right);
}

Finding sdk_is_there(const Bundle& bundle, const ProgramFile& worker) {
    Finding worst = sdk_of_image(bundle, worker, worker.images.front());
    for (const Image& image : worker.images) {
        Finding finding = sdk_of_image(bundle, worker, image);
        if (finding.verdict > worst.verdict) {
            worst = std::move(finding);
        }
    }
    return worst;
}

Finding adapter_is_there(const Bundle& bundle, bool simulated) {
    const fs::path adapter = bundle.contents / "Frameworks/CrAdapter/libCr_PTP_USB.dylib";
    const std::string name = "USB adapter: " + name_in(bundle, adapter);
    const std::string advice =
        "Without it the SDK sees no camera (0x8703). Copy the SDK's folder CrAdapter.";
    if (const std::string why = why_unreadable(adapter); !why.empty()) {
        return failure(name + " " + why, advice);
    }
    if (!simulated && !read_program_file(adapter)) {
        return failure(name + " is no library", advice);
    }
    return ok(name + (simulated ? ", a stand-in" : ""));
}

}  // namespace doctor
