#pragma once

#include <optional>
#include <string>

// The path of the running executable, not made canonical where the system gives it as it was
// started. Nothing when it cannot be told or does not fit 4096 bytes.
std::optional<std::string> executable_path();
