#include "tether/rpc/parameters.h"

#include <algorithm>
#include <cstdio>

#include "tether/rpc/text.h"

namespace rpc {
namespace {

// A client's own word in a sentence that it gets back.
std::string cut(const std::string& text) {
    constexpr std::size_t enough = 60;
    return text.size() <= enough ? text : valid_text(text.substr(0, enough)) + "...";
}

std::string number_text(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.12g", value);
    return text;
}

std::string listed(const std::vector<std::string_view>& words) {
    std::string text;
    for (std::size_t at = 0; at < words.size(); ++at) {
        text += at == 0 ? "" : at + 1 == words.size() ? " or " : ", ";
        text += '"' + std::string(words[at]) + '"';
    }
    return text;
}

std::string must_be(const Parameter& parameter) {
    const auto range = [&parameter](const char* kind) {
        return std::string(kind) + " from " + number_text(parameter.least) + " to " +
               number_text(parameter.most);
    };
    switch (parameter.type) {
        case Type::text:
            return parameter.words.empty()
                       ? "a text of " + std::to_string(parameter.shortest) + " to " +
                             std::to_string(parameter.longest) + " characters" +
                             (parameter.one_line ? " on one line" : "") + ", none of them U+0000"
                       : listed(parameter.words);
        case Type::number:
            return range("a number");
        case Type::integer:
            return range("a whole number");
        case Type::yes_or_no:
            return "true or false";
        case Type::list_of_integers:
            return "a list of at most " + std::to_string(parameter.most_items) + " whole numbers" +
                   (parameter.contains ? ", one of them " + std::to_string(*parameter.contains)
                                       : "");
        case Type::object:
            break;
    }
    return "an object";
}

std::size_t characters(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char byte) {
        return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
    }));
}

bool is_good_text(const Parameter& parameter, const std::string& text) {
    if (!parameter.words.empty()) {
        return std::find(parameter.words.begin(), parameter.words.end(), text) !=
               parameter.words.end();
    }
    const std::size_t length = characters(text);
    return length >= parameter.shortest && length <= parameter.longest &&
           text.find('\0') == std::string::npos &&
           !(parameter.one_line && text.find_first_of("\r\n") != std::string::npos);
}

bool is_good_list(const Parameter& parameter, const Read& list) {
    if (!list.is_array() || list.size() > parameter.most_items) {
        return false;
    }
    const bool whole = std::all_of(list.begin(), list.end(),
                                   [](const Read& one) { return one.is_number_integer(); });
    return whole && (!parameter.contains ||
                     std::find(list.begin(), list.end(), *parameter.contains) != list.end());
}

bool is_good(const Parameter& parameter, const Read& value) {
    const auto in_range = [&parameter](const Read& number) {
        const auto is = number.get<double>();
        return is >= parameter.least && is <= parameter.most;
    };
    switch (parameter.type) {
        case Type::text:
            return value.is_string() &&
                   is_good_text(parameter, value.get_ref<const std::string&>());
        case Type::number:
            return value.is_number() && in_range(value);
        case Type::integer:
            return value.is_number_integer() && in_range(value);
        case Type::yes_or_no:
            return value.is_boolean();
        case Type::list_of_integers:
            return is_good_list(parameter, value);
        case Type::object:
            break;
    }
    return value.is_object();
}

std::string below(std::string path, std::string_view name) {
    path += '.';
    path += name;
    return path;
}

// No table is deeper than what it lists, so neither is this.
std::optional<std::string> wrong_inside(const std::vector<Parameter>& known, const Read& given,
                                        const std::string& path) {
    for (const auto& member : given.items()) {
        const auto parameter = std::find_if(known.begin(), known.end(), [&](const Parameter& one) {
            return one.name == member.key();
        });
        const std::string where = below(path, cut(member.key()));
        if (parameter == known.end()) {
            return where + ": there is no such parameter";
        }
        if (!is_good(*parameter, member.value())) {
            return where + ": must be " + must_be(*parameter);
        }
        if (parameter->type == Type::object) {
            if (auto wrong = wrong_inside(parameter->members, member.value(), where)) {
                return wrong;
            }
        }
    }
    for (const Parameter& parameter : known) {
        if (parameter.required && !given.contains(std::string(parameter.name))) {
            return below(path, parameter.name) + ": is missing, must be " + must_be(parameter);
        }
    }
    return std::nullopt;
}

}  // namespace

const Method* find_method(const std::vector<Method>& methods, std::string_view name) {
    const auto found = std::find_if(methods.begin(), methods.end(),
                                    [name](const Method& one) { return one.name == name; });
    return found == methods.end() ? nullptr : &*found;
}

std::optional<std::string> wrong_with(const Method& method, const Read& parameters) {
    return wrong_inside(method.parameters, parameters, "params");
}

}  // namespace rpc
