#include "tests/host/afternoons/drawing.h"

#include <array>

#include "tests/host/afternoons/dice.h"
#include "tests/host/afternoons/situations.h"

namespace afternoons {
namespace {

// Things that follow each other closely find other mistakes than things that leave time to settle.
std::chrono::milliseconds pause(Dice& dice, int pace) {
    constexpr std::array<int, 6> upper{{3, 60, 800, 3000, 12000, 45000}};
    constexpr std::array<std::array<int, 6>, 3> odds{
        {{20, 20, 30, 20, 8, 2}, {10, 10, 25, 35, 16, 4}, {35, 30, 25, 7, 2, 1}}};
    int left = dice.below(100);
    for (std::size_t size = 0; size < upper.size(); ++size) {
        left -= odds[static_cast<std::size_t>(pace)][size];
        if (left < 0) {
            return std::chrono::milliseconds(dice.below(upper[size]));
        }
    }
    return {};
}

Event draw_event(Dice& dice, const std::vector<int>& weights, int total) {
    int left = dice.below(total);
    std::size_t index = 0;
    while (left >= weights[index]) {
        left -= weights[index++];
    }
    const Word& word = words()[index];
    return {{}, word.what, word.numbers > 0 ? dice.below(word.numbers) : 0};
}

}  // namespace

Story draw(std::uint64_t seed) {
    Dice dice(seed);
    Story story;
    // An afternoon has subjects: most things that can happen do not happen in it.
    std::vector<int> weights;
    int total = 0;
    const int how_many = 2 + dice.below(12);
    for (const Word& word : words()) {
        const bool of_the_host = word.what <= What::type;
        const bool subject = of_the_host || word.what == What::plug || dice.below(24) < how_many;
        weights.push_back(subject ? word.weight : 0);
        total += weights.back();
    }
    const int pace = dice.below(3);
    // Some begin with what is there before the host comes.
    while (dice.below(3) == 0) {
        story.events.push_back(draw_event(dice, weights, total));
    }
    if (dice.below(10) != 0) {
        story.events.push_back({pause(dice, 0), What::connect, 0});
    }
    // Most of what matters happens in a session.
    if (dice.below(4) != 0) {
        story.events.push_back(
            {std::chrono::milliseconds(2500 + dice.below(400)), What::capture, dice.below(7)});
    }
    if (dice.below(6) == 0) {
        const std::vector<Event> situation = draw_situation(dice);
        story.events.insert(story.events.end(), situation.begin(), situation.end());
    }
    const int events = 2 + dice.below(dice.below(4) == 0 ? 36 : 14);
    for (int count = 0; count < events; ++count) {
        Event event = draw_event(dice, weights, total);
        event.after = pause(dice, pace);
        story.events.push_back(event);
    }
    return story;
}

}  // namespace afternoons
