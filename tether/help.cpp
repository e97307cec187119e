#include "tether/help.h"

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include "tether/explain/pattern.h"

namespace tether {
namespace {

constexpr std::size_t columns = 80;
constexpr std::size_t option_margin = 24;
constexpr std::size_t margin = 2;  // between an option and its text, at least

// The text behind `begun`, from the margin on, over as many lines as it takes.
std::string wrapped(std::string begun, const std::string& text, std::size_t indent) {
    std::string all;
    if (begun.size() + margin > indent && !begun.empty()) {
        all = begun + "\n";
        begun.clear();
    }
    begun.resize(indent, ' ');
    bool has_word = false;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find_first_of(" \n", at), text.size());
        const std::string word = text.substr(at, end - at);
        if (has_word && begun.size() + 1 + word.size() > columns) {
            all += begun + "\n";
            begun = std::string(indent, ' ');
            has_word = false;
        }
        begun += (has_word ? " " : "") + word;
        has_word = true;
        at = end + 1;
    }
    return all + begun + "\n";
}

class Formatter : public CLI::Formatter {
  public:
    explicit Formatter(std::string behind_options = "")
        : behind_options_(std::move(behind_options)) {}

    std::string make_usage(const CLI::App* app, std::string name) const override {
        std::string usage = CLI::Formatter::make_usage(app, std::move(name));
        if (!behind_options_.empty()) {
            usage.insert(usage.find_last_not_of('\n') + 1, " " + behind_options_);
        }
        return usage;
    }

    std::string make_option(const CLI::Option* option, bool is_positional) const override {
        return wrapped("  " + make_option_name(option, is_positional) + make_option_opts(option),
                       make_option_desc(option), option_margin);
    }

    // The library's own words for this differ from version to version.
    std::string make_option_opts(const CLI::Option* option) const override {
        std::string words;
        if (!option->get_type_name().empty()) {
            words += " " + option->get_type_name();
        }
        if (!option->get_default_str().empty()) {
            words += " [" + option->get_default_str() + "]";
        }
        for (const CLI::Option* needed : option->get_needs()) {
            words += " (with " + needed->get_name() + ")";
        }
        return words;
    }

    std::string make_subcommand(const CLI::App* command) const override {
        return wrapped("  " + command->get_name(), command->get_description(), option_margin);
    }

    std::string make_description(const CLI::App* app) const override {
        return wrapped("", app->get_description(), 0);
    }

    std::string make_footer(const CLI::App* app) const override {
        const std::string footer = app->get_footer();
        return footer.empty() ? "" : "Example:\n  " + footer + "\n";
    }

  private:
    std::string behind_options_;
};

// Behind a sentence that says that there is no such thing.
std::string the_nearest_is(const std::string& asked, const std::vector<std::string>& names) {
    const auto nearest =
        std::min_element(names.begin(), names.end(), [&](const auto& one, const auto& other) {
            return explain::distance(asked, one) < explain::distance(asked, other);
        });
    return nearest == names.end() ? "" : "; the nearest is " + *nearest;
}

std::string no_such_command(const CLI::App& app, const std::string& word) {
    std::vector<std::string> names;
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
        names.push_back(command->get_name());
    }
    return "there is no command " + word + the_nearest_is(word, names);
}

}  // namespace

void show_help_in_80_columns(CLI::App& app) {
    app.formatter(std::make_shared<Formatter>());
}

void take_what_follows(CLI::App& command, const std::string& words) {
    command.prefix_command();
    command.formatter(std::make_shared<Formatter>(words));
}

std::string no_such_option(const CLI::App& command, const std::string& word) {
    const std::string asked = word.substr(0, word.find('='));
    std::vector<std::string> names;
    for (const CLI::Option* option : command.get_options()) {
        for (const std::string& name : option->get_lnames()) {
            names.push_back("--" + name);
        }
    }
    return "there is no option " + asked + the_nearest_is(asked, names);
}

std::string what_is_wrong(const CLI::App& app, const CLI::ParseError& error) {
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ExtrasError)) {
        const auto commands = app.get_subcommands();
        const CLI::App& command = commands.empty() ? app : *commands.front();
        std::vector<std::string> words = command.remaining();
        if (words.empty()) {
            words = app.remaining();
        }
        for (const std::string& word : words) {
            if (word.starts_with("-")) {
                return no_such_option(command, word);
            }
        }
        if (commands.empty() && !words.empty()) {
            return no_such_command(app, words.front());
        }
    }
    return error.what();
}

}  // namespace tether
