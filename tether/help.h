// How every command shows its help, and what is said of a wrong call.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace tether {

// For the whole program; commands that are added later get it too. No line is wider than 80
// columns. A footer is an example.
void show_help_in_80_columns(CLI::App& app);

// Everything behind the options of this command is its own, whatever it begins with; the usage
// names it in these words.
void take_what_follows(CLI::App& command, const std::string& words);

// What is wrong, a sentence; of an option that does not exist the nearest one that does.
std::string what_is_wrong(const CLI::App& app, const CLI::ParseError& error);

// The same of the words behind a command that takes any.
std::string no_such_option(const CLI::App& command, const std::string& word);

}  // namespace tether
