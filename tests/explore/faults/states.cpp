#include "tests/explore/faults/states.h"

#include "tests/explore/faults/fault.h"

namespace explore {

namespace {

constexpr const char* states[] = {"unconnected", "opening", "connected", "lost"};

// What a worker does only once is over when a session begins.
bool can_strike(std::string_view state, const Fault& fault) {
    const bool at_the_start = fault.call == Call::init || fault.call == Call::get_sdk_version;
    return !at_the_start || state == "unconnected";
}

}  // namespace

void StruckInStates::add(std::string_view tour, const Findings& findings) {
    struck_[std::string(tour.substr(0, tour.find('_')))] |= findings.struck;
}

std::vector<std::string> StruckInStates::missing() const {
    std::vector<std::string> cells;
    for (const char* const state : states) {
        const auto known = struck_.find(state);
        for (std::size_t i = 0; i < all_faults().size(); ++i) {
            const Fault& fault = all_faults()[i];
            const bool struck = known != struck_.end() && known->second.test(i);
            if (!struck && can_strike(state, fault)) {
                cells.push_back(to_text(fault) + " in the state " + state);
            }
        }
    }
    return cells;
}

}  // namespace explore
