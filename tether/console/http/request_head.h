// The head of a request, read more strictly than any browser writes it: what two programs could
// read in two ways, and what nobody here has a use for, is refused. Nothing of it reaches the HTTP
// library but what is named here.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace console {

constexpr std::size_t longest_head =
    16384;  // bytes; browsers send the cookies of other programs too
constexpr std::size_t longest_target = 2048;
constexpr std::size_t most_headers = 64;
constexpr std::size_t longest_body = std::size_t{1} << 20;

struct Head {
    std::string method;                          // GET, HEAD or POST
    std::string target;                          // begins with a slash; a query may follow
    std::map<std::string, std::string> headers;  // by their names in small letters
    std::size_t body = 0;                        // bytes that follow
    bool last = false;                           // nothing else is asked on this connection

    // Empty when there is none.
    std::string_view header(const std::string& name) const;

    // Behind NAME= in the query, as it stands there; empty when there is none.
    std::string_view parameter(std::string_view name) const;
};

struct Refusal {
    int status = 400;
    std::string_view sentence;
};

// How long it is, with the empty line that ends it; nothing while that has not come.
std::optional<std::size_t> length_of_head(std::string_view bytes);

// `text` is one head, with its empty line.
std::variant<Head, Refusal> read_head(std::string_view text);

}  // namespace console
