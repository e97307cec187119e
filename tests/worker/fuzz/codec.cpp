// Escaping, decoding and splitting of any bytes.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "protocol/fields.h"
#include "tests/worker/fuzz/require.h"

namespace {

std::string joined(const std::vector<std::string>& fields) {
    std::string line = fields.front();
    for (std::size_t index = 1; index < fields.size(); ++index) {
        line += '|' + fields[index];
    }
    return line;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);

    const std::string field = escape_field(text);
    require(decode_field(field) == text, "an escaped text is decoded to itself");
    require(field.find_first_of("|\n\r") == std::string::npos, "an escaped text is one field");

    const std::string decoded = decode_field(text);
    require(decoded.size() <= text.size(), "decoding never lengthens");
    require(decode_field(escape_field(decoded)) == decoded,
            "what was decoded survives the way back");

    const std::vector<std::string> fields = split_fields(text);
    require(joined(fields) == text, "the fields of a line are the line");
    for (const std::string& one : fields) {
        require(one.find('|') == std::string::npos, "a field holds no separator");
    }
    return 0;
}
