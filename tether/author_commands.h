// The commands for the author of a host: tap, replay, explain.
#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <vector>

#include "tether/replay/replay.h"
#include "tether/tap/tap.h"

namespace tether {

// "--" between a command's own options and the program that it is given: the words behind it move
// up. What follows the program is the program's.
void drop_separator(int& argc, char** argv);

class AuthorCommands {
  public:
    // Must outlive the parsing.
    explicit AuthorCommands(CLI::App& app);

    // The exit status; nothing when none of these was asked for.
    std::optional<int> carry_out();

  private:
    void declare_tap(CLI::App& app);
    void declare_replay(CLI::App& app);
    void declare_explain(CLI::App& app);
    int tap_worker();
    int play_record();
    int explain_text() const;

    CLI::App* tap_ = nullptr;
    CLI::App* replay_ = nullptr;
    CLI::App* explain_ = nullptr;
    tap::Options tapping_;
    replay::Options playing_;
    std::string text_;
    bool list_ = false;
};

}  // namespace tether
