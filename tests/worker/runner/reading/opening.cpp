#include "tests/worker/runner/reading/opening.h"

#include <algorithm>
#include <cstdlib>
#include <string>

namespace transcript {
namespace {

// The virtual camera's version unless the scene sets another.
constexpr unsigned long default_version = 0x01000000;

std::string version_line(const Transcript& transcript) {
    unsigned long version = default_version;
    for (const std::string& line : transcript.scene) {
        if (line.starts_with("version ")) {
            version = std::strtoul(line.c_str() + 8, nullptr, 0);
        }
    }
    return "LOG|[SONY] Camera Remote SDK " + std::to_string(version >> 24 & 0xFF) + "." +
           std::to_string(version >> 16 & 0xFF) + "." + std::to_string(version >> 8 & 0xFF);
}

std::string adapter_line(const Transcript& transcript) {
    const std::string folder = "{bundle}/MacOS/../Frameworks/CrAdapter";
    return transcript.no_adapter ? "LOG|[SONY] USB transport adapters are MISSING from " + folder +
                                       " — the SDK will not see any camera (0x8703)"
                                 : "LOG|[SONY] USB transport adapters found: " + folder;
}

}  // namespace

std::vector<Step> opening_steps(const Transcript& transcript) {
    if (transcript.cold) {
        return {};
    }
    std::vector<Step> steps;
    for (const std::string& line :
         {std::string("CPP_WORKER|START sony-1.0"), adapter_line(transcript),
          version_line(transcript), std::string("READY|OK")}) {
        steps.push_back({{transcript.file, 1}, "< " + line, Expect{line, {}}});
    }
    steps.push_back({{transcript.file, 1},
                     "= Init 0, GetSDKVersion",
                     Calls{{{"Init 0", {}, {}}, {"GetSDKVersion", {}, {}}}, false}});
    return steps;
}

std::vector<Step> closing_steps(const Transcript& transcript) {
    if (std::any_of(transcript.steps.begin(), transcript.steps.end(),
                    [](const Step& step) { return step.is_end(); })) {
        return {};
    }
    const Place end =
        transcript.steps.empty() ? Place{transcript.file, 1} : transcript.steps.back().place;
    return {{end, "> QUIT", Send{"QUIT\n"}}, {end, "@ exits 0", Exits{}}};
}

}  // namespace transcript
