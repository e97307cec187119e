// What a shoot says at its end.
#pragma once

#include <string>

#include "tether/shoot/report.h"

namespace tether {

std::string summary(const Report& report, const std::string& folder);

}  // namespace tether
