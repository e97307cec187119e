// A command as the worker understands it.
#pragma once

#include <string>
#include <string_view>

namespace tap {

// The name of the command that a line holds, in capitals; of a synonym, the name that it stands
// for.
std::string command_of(std::string_view line);

}  // namespace tap
