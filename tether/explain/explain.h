// tether explain: what a code, or a line of the wire, means; what causes it; what to do.
#pragma once

#include <optional>
#include <string>

namespace explain {

// The explanation of a problem code, a code of the SDK, a command or a line, also as a record or a
// terminal shows it. Nothing when it is not known.
std::optional<std::string> explanation_of(std::string text);

// What is known that looks most like it, for a text that has no explanation.
std::string nearest(const std::string& text);

// Everything that is known, each with what it means below it.
std::string list();

// The exit status: 1 when the text is not known.
int carry_out(const std::string& text);

}  // namespace explain
