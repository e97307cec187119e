#include "tether/explain/explain.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <string_view>
#include <utility>

#include "host/values/problem.h"
#include "host/values/problem_texts.h"
#include "host/values/sdk_codes.h"
#include "tether/conversation/record_line.h"
#include "tether/explain/pattern.h"
#include "tether/explain/wire_texts.h"
#include "tether/live/session_words.h"

namespace explain {
namespace {

constexpr std::size_t columns = 80;
constexpr std::size_t margin = 10;
// A pasted text is compared this far.
constexpr std::size_t longest_compared = 200;

// What has begun and the text behind it, over as many lines as it takes.
std::string wrapped(std::string all, std::string_view text, std::size_t indent) {
    std::size_t column = all.size();
    bool first = true;
    while (!text.empty()) {
        const std::string_view word = text.substr(0, text.find(' '));
        text.remove_prefix(std::min(word.size() + 1, text.size()));
        if (!first && column + 1 + word.size() > columns) {
            all += "\n" + std::string(indent, ' ');
            column = indent;
        } else if (!first) {
            all += ' ';
            ++column;
        }
        all += word;
        column += word.size();
        first = false;
    }
    return all + "\n";
}

// "  Means:  " and the text behind it. Backticks are for pages.
std::string paragraph(std::string_view name, std::string_view text) {
    std::string all = "  " + std::string(name);
    all.resize(std::max(all.size() + 1, margin), ' ');
    std::string plain(text);
    std::erase(plain, '`');
    return wrapped(std::move(all), plain, margin);
}

std::string paragraphs(std::string_view meaning, std::string_view cause, std::string_view advice) {
    return paragraph("Means:", meaning) + paragraph("Cause:", cause) + paragraph("Do:", advice);
}

std::optional<std::string> of_problem(std::string_view word) {
    for (const host::CodeEntry& entry : host::codes) {
        if (entry.word == word) {
            const bool error = entry.severity == host::Severity::error;
            return std::string(word) + ", a problem (" + (error ? "error" : "warning") + ")\n" +
                   paragraphs(meaning(entry.code), cause(entry.code), advice(entry.code));
        }
    }
    return std::nullopt;
}

std::optional<std::string> of_sdk_code(std::uint32_t code) {
    for (const host::SdkCode& entry : host::sdk_codes) {
        if (code_in(entry.code) == code) {
            return std::string(entry.code) + ", a code of the " + std::string(entry.from) + "\n" +
                   paragraphs(entry.meaning, entry.cause, entry.advice);
        }
    }
    return std::nullopt;
}

std::optional<std::string> of_line(std::string_view line) {
    // One without braces says more than one that anything fits.
    const LineText* found = nullptr;
    for (const LineText& text : line_texts) {
        const bool better = found == nullptr || found->text.find('{') != std::string_view::npos;
        if (better && is_line_of(line, text.text)) {
            found = &text;
        }
    }
    if (found == nullptr) {
        return std::nullopt;
    }
    std::string all = tether::shown(std::string(line)) + "\n" + paragraph("Said:", found->when) +
                      paragraph("Means:", found->means);
    if (const auto problem = of_problem(found->problem)) {
        all += "\n" + *problem;
    }
    if (const auto code = code_in(line)) {
        all += "\n" + of_sdk_code(*code).value_or(host::written_sdk_code(*code) +
                                                  ", a code of the SDK that is not known here\n");
    }
    return all;
}

std::string capitals(std::string_view text) {
    std::string all(text);
    std::transform(all.begin(), all.end(), all.begin(), [](char byte) {
        return byte >= 'a' && byte <= 'z' ? static_cast<char>(byte - 'a' + 'A') : byte;
    });
    return all;
}

std::optional<std::string> of_command(std::string_view line) {
    const std::string name = capitals(line.substr(0, line.find('|')));
    for (const CommandText& command : command_texts) {
        if (command.name == name) {
            const bool synonym = command.name != command.meant;
            return name + ", a command to the worker" +
                   (synonym ? ", another name of " + std::string(command.meant) : "") + "\n" +
                   paragraph("Does:", command.does) + paragraph("Answer:", command.answered);
        }
    }
    return std::nullopt;
}

// What is known of all lines that begin with this word, which stands alone.
std::optional<std::string> of_first_word(std::string_view word) {
    const std::string begin =
        capitals(word.ends_with('|') ? word.substr(0, word.size() - 1) : word) + "|";
    for (const LineText& text : line_texts) {
        if (text.text.starts_with(begin)) {
            return begin + "..., a line of the worker\n" + paragraph("Means:", text.means);
        }
    }
    return std::nullopt;
}

// Out of a record, a terminal or a transcript: without time, direction and what surrounds it.
std::string bare(std::string text) {
    const std::size_t begin = std::min(text.find_first_not_of(" \t\"'`"), text.size());
    const std::size_t end = text.find_last_not_of(" \t\r\n\"'`") + 1;
    text = text.substr(begin, end > begin ? end - begin : 0);
    if (const auto line = tether::read_record_line(text)) {
        return line->text;
    }
    const bool has_mark = text.starts_with("< ") || text.starts_with("> ");
    return text.substr(has_mark ? 2 : 0);
}

// Digits alone may be a code too, as a log shows it.
std::optional<std::string> of_code(const std::string& text) {
    const bool hexadecimal = text.size() >= 4 && text.size() <= 8 &&
                             text.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
    const std::string code = capitals(hexadecimal ? "0x" + text : text);
    if (!code.starts_with("0X") || code.size() > 10 ||
        code.find_first_not_of("0123456789ABCDEF", 2) != std::string::npos) {
        return std::nullopt;
    }
    const auto number = code_in("0x" + code.substr(2));
    return number ? of_sdk_code(*number) : std::nullopt;
}

// The problems and codes that stand in a sentence.
std::optional<std::string> of_words(std::string_view text) {
    std::string all;
    while (!text.empty()) {
        const std::size_t end =
            std::min(text.find_first_not_of(
                         "0123456789-ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"),
                     text.size());
        const std::string word(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        const bool code = word.starts_with("0x") || word.starts_with("0X");
        if (const auto found = code ? of_code(word) : of_problem(word)) {
            all += (all.empty() ? "" : "\n") + *found;
        }
    }
    return all.empty() ? std::nullopt : std::optional(all);
}

// Everything that has an explanation, as it would be asked for.
template <typename Visit>
void for_each_known(const Visit& visit) {
    for (const host::CodeEntry& entry : host::codes) {
        visit(entry.word, meaning(entry.code));
    }
    for (const host::SdkCode& entry : host::sdk_codes) {
        visit(entry.code, entry.meaning);
    }
    for (const CommandText& command : command_texts) {
        visit(command.name, command.does);
    }
    for (const LineText& line : line_texts) {
        visit(line.text, line.when);
    }
}

}  // namespace

std::optional<std::string> explanation_of(std::string text) {
    text = bare(std::move(text));
    for (const auto& found : {of_problem(text), of_code(text), of_line(text), of_command(text)}) {
        if (found) {
            return found;
        }
    }
    if (auto found = of_first_word(text)) {
        return found;
    }
    return of_words(text);
}

std::string nearest(const std::string& text) {
    const std::string asked = capitals(bare(text)).substr(0, longest_compared);
    std::string_view best;
    std::size_t least = std::numeric_limits<std::size_t>::max();
    for_each_known([&](std::string_view known, std::string_view) {
        const std::size_t far = distance(asked, capitals(known));
        if (far < least) {
            least = far;
            best = known;
        }
    });
    return std::string(best);
}

std::string list() {
    std::string all;
    for_each_known([&](std::string_view known, std::string_view meaning) {
        all += wrapped("", known, 4) + paragraph("", meaning);
    });
    return all;
}

int carry_out(const std::string& text) {
    if (const auto explanation = explanation_of(text)) {
        std::fputs(explanation->c_str(), stdout);
        return 0;
    }
    std::fprintf(stderr, "tether explain: nothing is known of \"%s\"; the nearest is %s\n",
                 tether::shown(text).c_str(), nearest(text).c_str());
    return 1;
}

}  // namespace explain
