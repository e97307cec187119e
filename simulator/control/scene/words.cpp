#include "simulator/control/scene/words.h"

#include <limits>

#include "simulator/sdk/text.h"

namespace camera_sim {
namespace {

bool is_blank(char c) {
    return c == ' ' || c == '\t' || c == ',' || c == '\r';
}

// Takes one escape, `at` standing on its backslash; false when there is no such escape.
bool take_escape(std::string_view line, std::size_t& at, std::string& text) {
    const char kind = at + 1 < line.size() ? line[at + 1] : '\0';
    at += 2;
    switch (kind) {
        case '"':
        case '\\':
            text += kind;
            return true;
        case 'n':
            text += '\n';
            return true;
        case 'r':
            text += '\r';
            return true;
        case 'x': {
            const int high = at < line.size() ? hex_digit(line[at]) : -1;
            const int low = at + 1 < line.size() ? hex_digit(line[at + 1]) : -1;
            if (high < 0 || low < 0) {
                return false;
            }
            text += static_cast<char>(high * 16 + low);
            at += 2;
            return true;
        }
        default:
            return false;
    }
}

}  // namespace

Words::Words(std::string_view line, For purpose) : line_(line), purpose_(purpose) {
    std::size_t at = 0;
    while (at < line.size()) {
        if (is_blank(line[at])) {
            ++at;
            continue;
        }
        if (line[at] == '#') {
            break;
        }
        Word word{"", line[at] == '"', at};
        if (!word.quoted) {
            while (at < line.size() && !is_blank(line[at]) && line[at] != '#') {
                word.text += line[at++];
            }
        } else {
            ++at;
            while (at < line.size() && line[at] != '"') {
                if (line[at] != '\\') {
                    word.text += line[at++];
                } else if (!take_escape(line, at, word.text)) {
                    wrong("a backslash in quotes stands before \", \\, n, r or xHH");
                    return;
                }
            }
            if (at >= line.size()) {
                wrong("a quoted text has no end");
                return;
            }
            ++at;
        }
        words_.push_back(std::move(word));
    }
}

bool Words::take(std::string_view bare_word) {
    if (!left() || words_[next_].quoted || words_[next_].text != bare_word) {
        return false;
    }
    ++next_;
    return true;
}

bool Words::next_is_number() const {
    return left() && !words_[next_].quoted && to_number(words_[next_].text).has_value();
}

std::string Words::next_text() const {
    return left() ? words_[next_].text : "";
}

const Words::Word* Words::next(const char* what) {
    if (!left()) {
        wrong(std::string(what) + " is missing");
        return nullptr;
    }
    return &words_[next_++];
}

std::string Words::word(const char* what) {
    const Word* word = next(what);
    if (word != nullptr && word->quoted) {
        wrong(std::string(what) + " is wanted, not the text " + in_quotes(word->text));
    }
    return word != nullptr ? word->text : "";
}

std::string Words::text(const char* what) {
    const Word* word = next(what);
    return word != nullptr ? word->text : "";
}

std::optional<std::string> Words::text_or_null(const char* what) {
    if (take("null")) {
        return std::nullopt;
    }
    return text(what);
}

std::uint64_t Words::number(const char* what) {
    const std::string text = word(what);
    const auto number = to_number(text);
    if (!number) {
        wrong(std::string(what) + " is a number, not \"" + text + "\"");
    }
    return number.value_or(0);
}

std::uint32_t Words::code(const char* what) {
    const std::uint64_t value = number(what);
    if (value > std::numeric_limits<std::uint32_t>::max()) {
        wrong(std::string(what) + " has at most 32 bits");
    }
    return static_cast<std::uint32_t>(value);
}

std::uint32_t Words::count(const char* what) {
    const std::uint64_t value = number(what);
    if (value > 1'000'000) {
        wrong(std::string(what) + " is at most a million");
    }
    return static_cast<std::uint32_t>(value);
}

Duration Words::duration(const char* what) {
    const std::string text = word(what);
    const bool in_milliseconds = text.size() > 2 && text.compare(text.size() - 2, 2, "ms") == 0;
    const std::string digits = text.substr(0, text.size() - (in_milliseconds ? 2 : 1));
    const std::size_t point = digits.find('.');
    const std::string fraction = point == std::string::npos ? "" : digits.substr(point + 1);
    const auto whole = to_number(digits.substr(0, point));
    const bool fraction_good = point == std::string::npos ||
                               (!fraction.empty() && fraction.size() <= 9 &&
                                fraction.find_first_not_of("0123456789") == std::string::npos);
    constexpr std::uint64_t longest = 1'000'000;
    if (text.size() < 2 || text.back() != 's' || !whole || *whole > longest || !fraction_good) {
        wrong(std::string(what) + " is a time like 250ms or 1.5s, not \"" + text + "\"");
        return Duration::zero();
    }
    const std::int64_t unit = in_milliseconds ? 1'000'000 : 1'000'000'000;
    std::int64_t nanoseconds = static_cast<std::int64_t>(*whole) * unit;
    std::int64_t place = unit;
    for (const char digit : fraction) {
        place /= 10;
        nanoseconds += (digit - '0') * place;
    }
    return Duration(nanoseconds);
}

std::string Words::rest() {
    std::string rest = left() ? line_.substr(words_[next_].begin) : "";
    next_ = words_.size();
    return rest;
}

bool Words::finished() {
    if (left()) {
        wrong("\"" + words_[next_].text + "\" is not understood here");
    }
    return error_.empty() && purpose_ == For::doing;
}

void Words::wrong(const std::string& sentence) {
    if (error_.empty()) {
        error_ = sentence;
    }
}

}  // namespace camera_sim
