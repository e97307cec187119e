#include "tests/explore/choices.h"

#include <sstream>

namespace explore {

std::string to_text(const Schedule& schedule) {
    std::string text;
    for (const Deviation& each : schedule) {
        text += text.empty() ? "" : " ";
        text += std::to_string(each.turn) + ":";
        text += each.choice == jump_ahead ? "jump" : std::to_string(each.choice);
    }
    return text;
}

bool from_text(const std::string& text, Schedule& schedule) {
    std::istringstream words(text);
    std::string word;
    while (words >> word) {
        Deviation deviation{};
        char colon = 0;
        std::istringstream parts(word);
        if (!(parts >> deviation.turn >> colon) || colon != ':') {
            return false;
        }
        std::string choice;
        parts >> choice;
        if (choice == "jump") {
            deviation.choice = jump_ahead;
        } else if (!choice.empty() && choice.find_first_not_of("0123456789") == choice.npos) {
            deviation.choice = std::stoi(choice);
        } else {
            return false;
        }
        schedule.push_back(deviation);
    }
    return true;
}

}  // namespace explore
