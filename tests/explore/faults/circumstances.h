#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/explore/faults/fault.h"

// What is wrong with the world in the runs that follow, beside the order of their steps.
namespace explore {

struct Circumstances {
    std::vector<const Fault*> faults;
    std::uint32_t cable_pulled_at = 0;  // turn, at the earliest
};

extern Circumstances circumstances;

// At the start of each run: no fault has struck, and none is on.
void begin_circumstances();
void switch_faults_on();
bool all_faults_struck();
// The turn at which the cable really went in this run; 0 when it did not.
void note_cable_pulled();
std::uint32_t cable_was_pulled_at();
Answer answer_with_faults(const Asked& asked);

// Before a schedule in a report: a word and a blank for each fault, and for the cable. The second
// one reads them back and returns the schedule that is left.
std::string text_of_circumstances();
std::string take_circumstances(const std::string& text);

}  // namespace explore
