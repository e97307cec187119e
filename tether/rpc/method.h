// What a method of a JSON-RPC server takes, as a table.
#pragma once

#include <cstddef>
#include <limits>
#include <optional>
#include <string_view>
#include <vector>

namespace rpc {

enum class Type { text, number, integer, yes_or_no, list_of_integers, object };

struct Parameter {
    std::string_view name;
    Type type;
    bool required = false;
    // Of a number or an integer.
    double least = std::numeric_limits<double>::lowest();
    double most = std::numeric_limits<double>::max();
    // Of a text: characters. None may hold U+0000, which no path and no command can carry.
    std::size_t shortest = 0;
    std::size_t longest = 4095;
    bool one_line = false;
    std::vector<std::string_view> words{};  // of a text: one of these, when there are any
    // Of a list: its length, and what must be in it.
    std::size_t most_items = 64;
    std::optional<int> contains{};
    std::vector<Parameter> members{};  // of an object
};

struct Method {
    std::string_view name;
    std::vector<Parameter> parameters;
};

}  // namespace rpc
