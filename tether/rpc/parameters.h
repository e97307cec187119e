// A client's parameters, held against the table of what a method takes.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tether/rpc/json.h"
#include "tether/rpc/method.h"

namespace rpc {

// Nothing when there is no such method.
const Method* find_method(const std::vector<Method>& methods, std::string_view name);

// What is wrong with the first that is wrong, by its name:
// "params.patience: must be a number from 0.1 to 3600". Nothing when all are good.
std::optional<std::string> wrong_with(const Method& method, const Read& parameters);

}  // namespace rpc
