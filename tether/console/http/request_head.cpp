#include "tether/console/http/request_head.h"

#include <algorithm>
#include <charconv>

namespace console {
namespace {

constexpr std::string_view line_end = "\r\n";
constexpr std::string_view end_of_head = "\r\n\r\n";

bool is_digit(char byte) {
    return byte >= '0' && byte <= '9';
}

// What names of methods and headers are made of.
bool is_token(std::string_view text) {
    constexpr std::string_view marks = "!#$%&'*+-.^_`|~";
    return !text.empty() && std::all_of(text.begin(), text.end(), [&](char byte) {
        return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || is_digit(byte) ||
               marks.find(byte) != std::string_view::npos;
    });
}

bool is_printed(char byte) {
    return byte > ' ' && byte <= '~';
}

// Bytes beyond ASCII are let through: other programs of this machine may have set such cookies.
bool is_of_value(char byte) {
    return is_printed(byte) || byte == ' ' || byte == '\t' ||
           static_cast<unsigned char>(byte) >= 0x80;
}

std::string_view without_blanks(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(" \t");
    return begin == std::string_view::npos
               ? std::string_view()
               : text.substr(begin, text.find_last_not_of(" \t") + 1 - begin);
}

std::string in_small_letters(std::string_view text) {
    std::string small(text);
    std::transform(small.begin(), small.end(), small.begin(), [](char byte) {
        return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte;
    });
    return small;
}

std::string_view take_line(std::string_view& text) {
    const std::size_t end = text.find(line_end);
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end + line_end.size());
    return line;
}

std::optional<Refusal> read_first_line(std::string_view line, Head& head) {
    const std::size_t behind_method = line.find(' ');
    const std::size_t behind_target = line.rfind(' ');
    if (behind_method == std::string_view::npos || behind_target <= behind_method) {
        return Refusal{400, "The first line is none of a request."};
    }
    const std::string_view version = line.substr(behind_target + 1);
    head.method = line.substr(0, behind_method);
    head.target = line.substr(behind_method + 1, behind_target - behind_method - 1);
    head.last = version == "HTTP/1.0";
    if (!is_token(head.method) || (version != "HTTP/1.1" && version != "HTTP/1.0") ||
        head.target.empty() || head.target.front() != '/' ||
        !std::all_of(head.target.begin(), head.target.end(), is_printed)) {
        return Refusal{400, "The first line is none of a request."};
    }
    if (head.target.size() > longest_target) {
        return Refusal{414, "The address is too long."};
    }
    if (head.method != "GET" && head.method != "HEAD" && head.method != "POST") {
        return Refusal{405, "There is GET, HEAD and POST."};
    }
    return std::nullopt;
}

std::optional<Refusal> read_header(std::string_view line, Head& head) {
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos || !is_token(line.substr(0, colon))) {
        return Refusal{400, "A header has no name."};
    }
    const std::string_view value = without_blanks(line.substr(colon + 1));
    if (!std::all_of(value.begin(), value.end(), is_of_value)) {
        return Refusal{400, "A header has bytes that none may have."};
    }
    if (head.headers.size() == most_headers) {
        return Refusal{431, "There are too many headers."};
    }
    // Who takes the first of two and who takes the last would see two requests.
    if (!head.headers.emplace(in_small_letters(line.substr(0, colon)), value).second) {
        return Refusal{400, "A header comes twice."};
    }
    return std::nullopt;
}

std::optional<Refusal> read_framing(Head& head) {
    const bool has_length = head.headers.count("content-length") != 0;
    if (head.headers.count("transfer-encoding") != 0) {
        return has_length ? Refusal{400, "The body has two lengths."}
                          : Refusal{411, "A body needs its Content-Length."};
    }
    const std::string_view length = head.header("content-length");
    const auto [end, error] =
        std::from_chars(length.data(), length.data() + length.size(), head.body);
    if (has_length && (length.empty() || !std::all_of(length.begin(), length.end(), is_digit))) {
        return Refusal{400, "Content-Length is no number."};
    }
    if (has_length && (error != std::errc() || head.body > longest_body)) {
        return Refusal{413, "A body has at most 1048576 bytes."};
    }
    if (head.method != "POST" && head.body != 0) {
        return Refusal{400, "Only a POST has a body."};
    }
    if (head.method == "POST" && !has_length) {
        return Refusal{411, "A body needs its Content-Length."};
    }
    if (head.headers.count("expect") != 0) {
        return Refusal{417, "Nothing can be expected here."};
    }
    if (head.headers.count("content-encoding") != 0) {
        return Refusal{415, "A body is taken only as it is."};
    }
    return std::nullopt;
}

}  // namespace

std::string_view Head::header(const std::string& name) const {
    const auto found = headers.find(name);
    return found == headers.end() ? std::string_view() : std::string_view(found->second);
}

std::string_view Head::parameter(std::string_view name) const {
    const std::size_t mark = target.find('?');
    std::string_view rest =
        mark == std::string::npos ? std::string_view() : std::string_view(target).substr(mark + 1);
    while (!rest.empty()) {
        const std::string_view one = rest.substr(0, rest.find('&'));
        rest.remove_prefix(std::min(one.size() + 1, rest.size()));
        if (one.size() > name.size() && one.substr(0, name.size()) == name &&
            one[name.size()] == '=') {
            return one.substr(name.size() + 1);
        }
    }
    return {};
}

std::optional<std::size_t> length_of_head(std::string_view bytes) {
    const std::size_t end = bytes.find(end_of_head);
    return end == std::string_view::npos ? std::nullopt : std::optional(end + end_of_head.size());
}

std::variant<Head, Refusal> read_head(std::string_view text) {
    Head head;
    if (const auto refusal = read_first_line(take_line(text), head)) {
        return *refusal;
    }
    while (text != line_end) {
        if (const auto refusal = read_header(take_line(text), head)) {
            return *refusal;
        }
    }
    if (const auto refusal = read_framing(head)) {
        return *refusal;
    }
    head.last = head.last || in_small_letters(head.header("connection")) == "close";
    return head;
}

}  // namespace console
