#include "tether/doctor/examination.h"

#include <algorithm>
#include <cstdio>
#include <sstream>

#include "tether/doctor/checks.h"
#include "tether/doctor/sdk_library.h"

namespace doctor {
namespace {

bool is_for(const ProgramFile& program, const System& system) {
    return (program.format == ProgramFile::Format::mach_o) == system.is_macos;
}

bool drives_the_virtual_camera(const Bundle& bundle, const ProgramFile& worker) {
    const Image& image = worker.images.front();
    const auto name = sdk_library_name(image);
    return name && is_simulated(sdk_library(bundle, image, *name));
}

void print(const Finding& finding) {
    constexpr const char* words[] = {"ok  ", "warn", "FAIL"};
    std::printf("%s  %s\n", words[static_cast<int>(finding.verdict)], finding.text.c_str());
    std::istringstream advice(finding.advice);
    for (std::string line; std::getline(advice, line);) {
        std::printf("      %s\n", line.c_str());
    }
    std::fflush(stdout);
}

}  // namespace

void examine(const std::filesystem::path& path, const std::optional<std::filesystem::path>& folder,
             const System& system, const std::function<void(const Finding&)>& tell) {
    const Bundle bundle = bundle_at(path);
    const auto worker = read_program_file(bundle.worker);
    const Finding present = worker_is_there(bundle, worker);
    tell(present);
    bool simulated = false;
    if (worker) {
        simulated = drives_the_virtual_camera(bundle, *worker);
        tell(run_path_is_right(*worker));
        tell(sdk_is_there(bundle, *worker));
        tell(adapter_is_there(bundle, simulated));
        if (worker->format == ProgramFile::Format::mach_o) {
            tell(signature_holds(bundle, system));
        }
    }
    if (worker && !is_for(*worker, system)) {
        tell(warning("start: not tried, the worker is for " + describe(*worker),
                     "Run tether doctor there too."));
    } else if (present.verdict != Verdict::failure) {
        // The virtual camera is nobody else's.
        if (!simulated) {
            tell(camera_is_free(system));
        }
        tell(worker_starts(bundle.worker));
    }
    if (folder) {
        tell(folder_takes_pictures(*folder));
    }
}

int examine_aloud(const std::filesystem::path& bundle,
                  const std::optional<std::filesystem::path>& folder) {
    Verdict worst = Verdict::ok;
    examine(bundle, folder, this_system(), [&](const Finding& finding) {
        print(finding);
        worst = std::max(worst, finding.verdict);
    });
    return worst == Verdict::failure ? 1 : 0;
}

}  // namespace doctor
