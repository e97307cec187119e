#pragma once

#include <string>
#include <utility>
#include <vector>

// What the figures depend on, without anything that names this one machine.
std::vector<std::pair<std::string, std::string>> describe_machine();
