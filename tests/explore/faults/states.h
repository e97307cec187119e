#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "tests/explore/search/findings.h"

// Which fault has struck in which state of the session, over all tours that go through it.
namespace explore {

class StruckInStates {
  public:
    // A tour is named for its state: "opening_quit".
    void add(std::string_view tour, const Findings& findings);

    // In words: every fault that has struck in none of the tours of a state, though it can happen
    // there.
    std::vector<std::string> missing() const;

  private:
    std::map<std::string, std::bitset<most_faults>, std::less<>> struck_;
};

}  // namespace explore
