// The problems that stand, at most one of a code.
#pragma once

#include <optional>
#include <vector>

#include "host/values/problem.h"

namespace host::brain {

class StandingProblems {
  public:
    // False when the very same one stands already.
    bool raise(const Problem& problem);

    // False when none of this code stood.
    bool clear(Code code);

    bool stands(Code code) const {
        return standing(code).has_value();
    }
    std::optional<Problem> standing(Code code) const;

    const std::vector<Problem>& all() const {
        return problems_;
    }

  private:
    std::vector<Problem> problems_;
};

}  // namespace host::brain
