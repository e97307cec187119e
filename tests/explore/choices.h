#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace explore {

inline constexpr int jump_ahead =
    30;                               // instead of a fiber: the clock moves although some can go on
inline constexpr int stop_here = 31;  // the rest of this run is known

// Who may be next.
struct Options {
    std::uint32_t ready;  // a bit for each fiber
    int current;
    bool jump;

    bool current_ready() const {
        return (ready >> current & 1) != 0;
    }
    // Whoever runs goes on; otherwise the first one that can.
    int usual() const {
        return current_ready() ? current : __builtin_ctz(ready);
    }
};

// A choice that was not the usual one, by the turn it was made at.
struct Deviation {
    std::uint32_t turn;
    int choice;
};

// A schedule is the list of its deviations; everything else goes the usual way.
using Schedule = std::vector<Deviation>;

std::string to_text(const Schedule& schedule);
bool from_text(const std::string& text, Schedule& schedule);

// Whoever decides what happens next.
class Choices {
  public:
    virtual ~Choices() = default;

    int decide(std::uint32_t turn, const Options& options) {
        const int choice = choose(turn, options);
        if (choice != options.usual() && choice != stop_here) {
            taken.push_back({turn, choice});
        }
        return choice;
    }

    Schedule taken;

  protected:
    virtual int choose(std::uint32_t turn, const Options& options) = 0;
};

}  // namespace explore
