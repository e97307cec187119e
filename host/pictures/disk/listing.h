// What a folder holds.
#pragma once

#include <functional>

namespace host::pictures {

// Every name but "." and "..", in any order, until the function says false. An errno, or 0.
int list_folder(int folder, const std::function<bool(const char*)>& each);

}  // namespace host::pictures
