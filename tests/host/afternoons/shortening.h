// Makes a story that shows a mistake as short as it gets.
#pragma once

#include <string>

#include "tests/host/afternoons/story.h"

namespace afternoons {

// Still fails for the same guarantee.
Story shorten(const Story& story, const std::string& guarantee);

}  // namespace afternoons
