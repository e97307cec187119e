// One step from one line of a transcript.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "tests/worker/runner/reading/transcript.h"

namespace transcript {

using Action = decltype(Step::action);

// Nothing and a sentence in `error` when the line is no step. Blocks and included files are not
// lines: the reader of the whole transcript sees to them.
std::optional<Action> read_step(std::string_view line, std::string& error);

// Reads that a transcript shows only when it asks for them.
bool is_read(std::string_view call);

}  // namespace transcript
