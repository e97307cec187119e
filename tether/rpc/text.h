// Text that can stand in JSON.
#pragma once

#include <string>
#include <string_view>

namespace rpc {

// File and camera names are bytes. Those that are UTF-8 stay as they are; in any other, each byte
// that belongs to no character becomes %XX and each % becomes %25, so that decoding the percent
// signs gives the name back.
std::string valid_text(std::string_view bytes);

}  // namespace rpc
