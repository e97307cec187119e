// Playing a transcript against a worker.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "tests/worker/runner/reading/transcript.h"

namespace transcript {

struct Failure {
    Place place;
    std::string expected;
    std::string came;
    std::vector<std::string> recent;  // the lines of both directions up to the failure
    std::string complaints;           // the worker's standard error
};

// Nothing when everything came as the transcript says.
std::optional<Failure> perform(const Transcript& transcript, const std::filesystem::path& worker);

}  // namespace transcript
