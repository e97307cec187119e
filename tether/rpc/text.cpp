#include "tether/rpc/text.h"

#include "host/values/utf8.h"

namespace rpc {

std::string valid_text(std::string_view bytes) {
    return host::is_utf8(bytes) ? std::string(bytes) : host::escape_bytes(bytes);
}

}  // namespace rpc
