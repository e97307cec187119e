#include "tests/worker/runner/reading/directives.h"

#include "tests/worker/runner/reading/words.h"

namespace transcript {
namespace {

using Words = std::vector<std::string>;

bool read_arguments(const Words& words, Transcript& transcript, std::string&) {
    transcript.arguments.assign(words.begin() + 1, words.end());
    return true;
}

bool read_environment(const Words& words, Transcript& transcript, std::string& error) {
    for (auto word = words.begin() + 1; word != words.end(); ++word) {
        const std::size_t equals = word->find('=');
        if (equals == 0 || equals == std::string::npos) {
            error = "@ environment wants NAME=VALUE";
            return false;
        }
        transcript.environment.emplace_back(word->substr(0, equals), word->substr(equals + 1));
    }
    return true;
}

struct Directive {
    std::string_view name;
    bool Transcript::*flag;  // set by the bare word
    bool (*read)(const Words&, Transcript&, std::string&);
};

constexpr Directive directives[] = {
    {"arguments", nullptr, read_arguments},
    {"environment", nullptr, read_environment},
    {"cold", &Transcript::cold, nullptr},
    {"reads", &Transcript::reads, nullptr},
    {"no adapter", &Transcript::no_adapter, nullptr},
    {"slow", &Transcript::slow, nullptr},
};

const Directive* find(std::string_view text) {
    for (const Directive& directive : directives) {
        if (text == directive.name ||
            (directive.read != nullptr && text.starts_with(std::string(directive.name) + " "))) {
            return &directive;
        }
    }
    return nullptr;
}

}  // namespace

bool is_directive(std::string_view text) {
    return find(text) != nullptr;
}

bool read_directive(std::string_view text, Transcript& transcript, std::string& error) {
    const Directive& directive = *find(text);
    if (directive.flag != nullptr) {
        transcript.*directive.flag = true;
        return true;
    }
    const auto words = read_words(text);
    if (!words || words->size() < 2) {
        error = "@ " + std::string(directive.name) + " wants words, quoted where they hold blanks";
        return false;
    }
    return directive.read(*words, transcript, error);
}

}  // namespace transcript
