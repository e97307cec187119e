#include "host/brain/standing_problems.h"

#include <algorithm>

namespace host::brain {

bool StandingProblems::raise(const Problem& problem) {
    for (Problem& standing : problems_) {
        if (standing.code == problem.code) {
            if (standing == problem) {
                return false;
            }
            standing = problem;
            return true;
        }
    }
    problems_.push_back(problem);
    return true;
}

bool StandingProblems::clear(Code code) {
    return std::erase_if(problems_,
                         [code](const Problem& problem) { return problem.code == code; }) > 0;
}

std::optional<Problem> StandingProblems::standing(Code code) const {
    const auto found =
        std::find_if(problems_.begin(), problems_.end(),
                     [code](const Problem& problem) { return problem.code == code; });
    return found == problems_.end() ? std::nullopt : std::optional(*found);
}

}  // namespace host::brain
