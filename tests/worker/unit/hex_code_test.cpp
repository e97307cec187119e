// The form in which SDK codes appear in lines.

#include <cstdint>
#include <gtest/gtest.h>
#include <string>

#include "protocol/emit.h"

namespace {

TEST(HexCode, HasEightUpperCaseDigits) {
    struct Code {
        std::uint32_t number;
        std::string text;
    };
    const Code table[] = {
        {0, "0x00000000"},          {1, "0x00000001"},          {10, "0x0000000A"},
        {255, "0x000000FF"},        {0x8402, "0x00008402"},     {0x0002008C, "0x0002008C"},
        {0x89ABCDEF, "0x89ABCDEF"}, {0x7FFFFFFF, "0x7FFFFFFF"}, {0xFFFFFFFF, "0xFFFFFFFF"},
    };
    for (const Code& row : table) {
        EXPECT_EQ(hex_code(row.number), row.text);
    }
}

}  // namespace
