#include "tests/explore/faults/circumstances.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>

#include "tests/explore/scheduler.h"

namespace explore {

Circumstances circumstances;

namespace {

constexpr char pulled[] = "pulled-at/";

std::vector<int> g_strikes;
bool g_on = false;
std::uint32_t g_cable_pulled = 0;

}  // namespace

void begin_circumstances() {
    g_strikes.assign(circumstances.faults.size(), 0);
    g_on = false;
    g_cable_pulled = 0;
}

void switch_faults_on() {
    g_on = true;
}

bool all_faults_struck() {
    return std::find(g_strikes.begin(), g_strikes.end(), 0) == g_strikes.end();
}

void note_cable_pulled() {
    g_cable_pulled = run.turns;
}

std::uint32_t cable_was_pulled_at() {
    return g_cable_pulled;
}

Answer answer_with_faults(const Asked& asked) {
    Answer answer;
    for (std::size_t i = 0; g_on && i < circumstances.faults.size(); ++i) {
        const Fault& fault = *circumstances.faults[i];
        if (!fault.concerns(asked) || (g_strikes[i] > 0 && !fault.lasting)) {
            continue;
        }
        const Answer& more = fault.trouble.answer;
        Answer worse = answer;
        worse.late += more.late;
        worse.result = answer.result != 0 ? answer.result : more.result;
        worse.odd = answer.odd != Odd::no ? answer.odd : more.odd;
        // What another fault hides has not struck yet.
        g_strikes[i] += worse == answer ? 0 : 1;
        answer = worse;
    }
    return answer;
}

std::string text_of_circumstances() {
    std::string text;
    for (const Fault* fault : circumstances.faults) {
        text += to_text(*fault) + " ";
    }
    if (circumstances.cable_pulled_at != 0) {
        text += pulled + std::to_string(circumstances.cable_pulled_at) + " ";
    }
    return text;
}

std::string take_circumstances(const std::string& text) {
    circumstances = Circumstances{};
    std::istringstream words(text);
    std::string rest;
    for (std::string word; words >> word;) {
        if (const Fault* const fault = fault_named(word)) {
            circumstances.faults.push_back(fault);
        } else if (word.starts_with(pulled)) {
            circumstances.cable_pulled_at = static_cast<std::uint32_t>(
                std::strtoul(word.c_str() + sizeof pulled - 1, nullptr, 10));
        } else {
            rest += word + " ";
        }
    }
    return rest;
}

}  // namespace explore
