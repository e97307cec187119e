// Numbers that a command takes.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace tether {

// What a number may be. The largest ones are far beyond any use, and far below what a clock holds.
struct Range {
    const char* kind;
    const char* digits;  // the characters that it is written with
    double least;
    double most;
    const char* words;
};

// Refuses what CLI11 itself takes: "nan", "inf", "0x10", and "010" for 8. `range` must stay.
CLI::Validator in(const Range& range);

// For the help.
std::string type_of(const Range& range);

}  // namespace tether
