// What a transcript sets up before its first step.
#pragma once

#include <string>
#include <string_view>

#include "tests/worker/runner/reading/transcript.h"

namespace transcript {

// Whether the text behind an "@" is a directive rather than a step.
bool is_directive(std::string_view text);

// False and a sentence in `error` when it is not well formed.
bool read_directive(std::string_view text, Transcript& transcript, std::string& error);

}  // namespace transcript
