// A transcript from its file and the files that it includes.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "tests/worker/runner/reading/transcript.h"

namespace transcript {

// Nothing, and "FILE:LINE: SENTENCE" in `error`, when a line is not understood or the transcript
// proves nothing.
std::optional<Transcript> read_transcript(const std::filesystem::path& file, std::string& error);

}  // namespace transcript
