#include "host/pictures/naming/name_template.h"

#include <algorithm>
#include <array>
#include <ctime>

#include "host/pictures/store.h"
#include "host/values/utf8.h"

namespace host::pictures {
namespace {

constexpr std::string_view camera_stem = "{camera}";
constexpr std::size_t longest_template = 1024;
constexpr std::size_t longest_part = 200;  // in bytes; 255 is what a disk takes
constexpr unsigned int widest = 12;

// What some file systems take in no name; a folder that was shot into is copied to others.
constexpr std::string_view not_in_names = "\\:*?\"<>|";

struct Word {
    std::string_view name;
    unsigned int width = 0;
    bool known = false;
};

// What stands between two braces.
Word read_word(std::string_view text) {
    constexpr std::array<std::string_view, 5> names{"camera", "date", "time", "shot", "n"};
    const std::size_t colon = text.find(':');
    Word word{text.substr(0, colon), 0, false};
    word.known = std::count(names.begin(), names.end(), word.name) > 0;
    if (colon != std::string_view::npos) {
        const std::string_view digits = text.substr(colon + 1);
        for (const char digit : digits.substr(0, 3)) {
            word.width = word.width * 10 + static_cast<unsigned int>(digit - '0');
        }
        word.known = (word.name == "n" || word.name == "shot") && !digits.empty() &&
                     digits.size() < 3 &&
                     digits.find_first_not_of("0123456789") == std::string_view::npos &&
                     word.width >= 1 && word.width <= widest;
    }
    return word;
}

std::string local_time(TimeOfDay time, const char* format) {
    const auto seconds =
        static_cast<std::time_t>(std::chrono::floor<std::chrono::seconds>(time).count());
    std::tm parts{};
    ::localtime_r(&seconds, &parts);
    std::array<char, 32> text{};
    return {text.data(), std::strftime(text.data(), text.size(), format, &parts)};
}

std::string padded(std::uint64_t number, unsigned int width) {
    const std::string digits = std::to_string(number);
    return std::string(std::max<std::size_t>(width, digits.size()) - digits.size(), '0') + digits;
}

std::string value_of(const Word& word, const NameFacts& facts) {
    if (word.name == "camera") {
        return facts.camera;
    }
    if (word.name == "date") {
        return local_time(facts.at, "%Y-%m-%d");
    }
    if (word.name == "time") {
        return local_time(facts.at, "%H-%M-%S");
    }
    return padded(word.name == "shot" ? facts.shot.value_or(0) : facts.number, word.width);
}

std::string expand(std::string_view name_template, const NameFacts& facts) {
    std::string text;
    while (!name_template.empty()) {
        const std::size_t open = name_template.find('{');
        text += name_template.substr(0, open);
        if (open == std::string_view::npos) {
            break;
        }
        const std::size_t close = name_template.find('}', open);
        text += value_of(read_word(name_template.substr(open + 1, close - open - 1)), facts);
        name_template.remove_prefix(close + 1);
    }
    return text;
}

// A sentence about the words in braces; empty when there is nothing to say.
std::string why_no_words(std::string_view text) {
    for (;;) {
        const std::size_t open = text.find_first_of("{}");
        if (open == std::string_view::npos) {
            return {};
        }
        const std::size_t close = text.find('}', open + 1);
        if (text[open] == '}' || close == std::string_view::npos) {
            return "The name has a brace without its other one.";
        }
        const std::string_view inside = text.substr(open + 1, close - open - 1);
        if (!read_word(inside).known) {
            return "The name has {" + std::string(inside) +
                   "} in it: known are {camera}, {date}, {time}, {shot} and {n}, the last two with "
                   "a width from 1 to 12 as in {n:4}.";
        }
        text.remove_prefix(close + 1);
    }
}

std::string why_no_part(std::string_view part) {
    if (part.empty()) {
        return "The name has an empty part: it begins or ends with a slash, or has two in a row.";
    }
    if (part[0] == '.') {
        return "The name has a part that begins with a point: it would be hidden, or lead out of "
               "the folder.";
    }
    if (part.back() == ' ' || part.back() == '.') {
        return "The name has a part that ends with a space or a point, which not every disk takes.";
    }
    if (part.size() > longest_part) {
        return "The name has a part of more than " + std::to_string(longest_part) + " bytes.";
    }
    return {};
}

std::string why_no_bytes(std::string_view text) {
    if (!is_utf8(text)) {
        return "The name is not UTF-8.";
    }
    for (const char byte : text) {
        if (static_cast<unsigned char>(byte) < 0x20 || byte == 0x7F) {
            return "The name has a control character in it.";
        }
        if (not_in_names.find(byte) != std::string_view::npos) {
            return std::string("The name has \"") + byte + "\" in it, which not every disk takes.";
        }
    }
    return {};
}

}  // namespace

std::string why_no_name(std::string_view name_template) {
    if (name_template.size() > longest_template) {
        return "The name is longer than " + std::to_string(longest_template) + " bytes.";
    }
    if (name_template.empty()) {
        return {};
    }
    std::string why = why_no_words(name_template);
    if (!why.empty()) {
        return why;
    }
    // As it would be for some picture; the words themselves hold nothing that a disk minds.
    const std::string text = expand(name_template, {"DSC00001", 1, 1, TimeOfDay{}});
    why = why_no_bytes(text);
    std::string_view rest = text;
    while (why.empty()) {
        const std::size_t slash = rest.find('/');
        why = why_no_part(rest.substr(0, slash));
        if (slash == std::string_view::npos) {
            break;
        }
        rest.remove_prefix(slash + 1);
    }
    return why;
}

Spot spot_for(std::string_view name_template, const NameFacts& facts) {
    const std::string text = expand(name_template.empty() ? camera_stem : name_template, facts);
    const std::size_t slash = text.rfind('/');
    if (slash == std::string::npos) {
        return {"", text};
    }
    return {text.substr(0, slash), text.substr(slash + 1)};
}

bool has_number(std::string_view name_template) {
    return name_template.find("{n}") != std::string_view::npos ||
           name_template.find("{n:") != std::string_view::npos;
}

}  // namespace host::pictures
