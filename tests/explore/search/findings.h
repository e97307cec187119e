#pragma once

#include <bitset>
#include <cstdint>
#include <string>

namespace explore {

inline constexpr std::size_t most_faults = 512;

// What came of a search. Plain data: it is handed from process to process.
struct Findings {
    std::uint64_t runs;
    std::uint64_t schedules;  // different ones, independent steps put aside
    std::uint64_t simulated_ms;
    std::uint64_t faults;             // that struck, each alone
    std::bitset<most_faults> struck;  // which of them, in the order of all_faults
    std::uint64_t pairs;              // of faults, both of which struck
    std::uint64_t pulls;              // of the cable, each at another turn of the session
    bool failed;
    char complaint[1024];
    char schedule[2048];
    char story[16384];
};

template <std::size_t size>
void copy(char (&to)[size], const std::string& text) {
    to[text.copy(to, size - 1)] = '\0';
}

}  // namespace explore
