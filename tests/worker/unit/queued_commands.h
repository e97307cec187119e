#pragma once

#include <string>
#include <vector>

#include "threads/main_thread.h"

// Takes everything that is queued now, oldest first, and never waits.
std::vector<std::string> queued_commands() REQUIRES(main_thread);
