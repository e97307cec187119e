#include "tether/author_commands.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

#include "tether/explain/explain.h"
#include "tether/help.h"

namespace tether {
namespace {

int wrong(const std::string& sentence) {
    std::fprintf(stderr, "tether: %s\n", sentence.c_str());
    return 2;
}

// What follows the first word that is no option of a command: a worker and its arguments. Nothing,
// and why in `error`, when there is none.
std::vector<std::string> behind_options(const CLI::App& command, const std::string& missing,
                                        std::string& error) {
    std::vector<std::string> rest = command.remaining();
    if (!rest.empty() && rest.front() == "--") {
        rest.erase(rest.begin());
    } else if (!rest.empty() && rest.front().starts_with("-")) {
        error = no_such_option(command, rest.front());
        return {};
    }
    error = rest.empty() ? missing : "";
    return rest;
}

}  // namespace

void drop_separator(int& argc, char** argv) {
    const std::string_view command = argc > 1 ? argv[1] : "";
    if (command != "tap" && command != "replay") {
        return;
    }
    for (int index = 2; index < argc; ++index) {
        const std::string_view word = argv[index];
        if (word == "--") {
            std::copy(argv + index + 1, argv + argc + 1, argv + index);
            --argc;
            return;
        }
        if (!word.starts_with("-")) {
            return;
        }
        index += word == "--record" || word == "--run" ? 1 : 0;
    }
}

AuthorCommands::AuthorCommands(CLI::App& app) {
    declare_tap(app);
    declare_replay(app);
    declare_explain(app);
}

void AuthorCommands::declare_tap(CLI::App& app) {
    tap_ = app.add_subcommand(
        "tap",
        "Stand in a worker's place in any host, and say what the host does wrong. WORKER and its "
        "arguments follow the options");
    tap_->add_option("--record", tapping_.record,
                     "Where the record goes, a new file; otherwise its name has date and process "
                     "number")
        ->type_name("FILE");
    tap_->add_flag("--redact", tapping_.redact, "Keep paths and names out of the record");
    tap_->add_flag("--strict", tapping_.strict, "End with 3 when there was a complaint");
    take_what_follows(*tap_, "WORKER [ARGUMENTS]");
    tap_->footer("tether tap --record a.record /path/to/sony-worker");
}

void AuthorCommands::declare_replay(CLI::App& app) {
    replay_ =
        app.add_subcommand("replay", "Be a worker made of a record, which follows the options");
    replay_->add_flag("--fast", playing_.fast, "Play it at once instead of with its times");
    replay_->add_flag("--strict", playing_.strict, "End with 3 where the host says something else");
    replay_
        ->add_option("--run", playing_.run,
                     "Which worker of the record, from 1; otherwise each that a host starts is the "
                     "next one")
        ->check(CLI::Range(1U, 1'000'000U).description(""))
        ->type_name("NUMBER");
    take_what_follows(*replay_, "RECORD");
    replay_->footer("tether replay --fast a.record");
}

void AuthorCommands::declare_explain(CLI::App& app) {
    explain_ = app.add_subcommand("explain", "Say what a code or a line of the wire means");
    CLI::Option* text = explain_->add_option(
        "text", text_, "A problem, a code such as 0x8402, a command, or a line as it was pasted");
    explain_->add_flag("--list", list_, "Name everything that can be explained")->excludes(text);
    explain_->footer("tether explain 'ERROR|Camera not detected'");
}

std::optional<int> AuthorCommands::carry_out() {
    if (tap_->parsed()) {
        return tap_worker();
    }
    if (replay_->parsed()) {
        return play_record();
    }
    if (explain_->parsed()) {
        return explain_text();
    }
    return std::nullopt;
}

int AuthorCommands::tap_worker() {
    std::string error;
    tapping_.worker =
        behind_options(*tap_, "which worker? tether tap [OPTIONS] WORKER [ARGUMENTS]", error);
    return wrong(error.empty() ? tap::carry_out(tapping_) : error);
}

int AuthorCommands::play_record() {
    std::string error;
    const auto rest =
        behind_options(*replay_, "which record? tether replay [OPTIONS] RECORD", error);
    if (!error.empty()) {
        return wrong(error);
    }
    // A host that starts a worker with arguments knows none of these.
    for (const std::string& word : rest) {
        if (word == "--fast" || word == "--strict" || word.starts_with("--run")) {
            return wrong(word + " stands behind the record: write it before");
        }
    }
    playing_.record = rest[0];
    playing_.folder = rest.size() > 1 ? rest[1] : "";
    return wrong(replay::carry_out(playing_));
}

int AuthorCommands::explain_text() const {
    if (list_) {
        std::fputs(explain::list().c_str(), stdout);
        return 0;
    }
    if (text_.empty()) {
        return wrong("explain what? A code or a line, or --list for everything");
    }
    return explain::carry_out(text_);
}

}  // namespace tether
