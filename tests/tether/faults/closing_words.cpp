#include "tests/tether/faults/closing_words.h"

#include <algorithm>
#include <iterator>

std::vector<std::string> lines_of(const std::string& text) {
    std::vector<std::string> lines;
    std::size_t at = 0;
    for (std::size_t end; (end = text.find('\n', at)) != std::string::npos; at = end + 1) {
        lines.push_back(text.substr(at, end - at));
    }
    return lines;
}

Words words_of(const std::string& output, const std::string& shots) {
    Words words;
    const std::string in_folder = " in " + shots + "; ";
    const std::vector<std::string> lines = lines_of(output);
    const auto sum = std::find_if(lines.begin(), lines.end(), [&](const std::string& line) {
        return line.find(in_folder) != std::string::npos;
    });
    if (sum == lines.end()) {
        return words;
    }
    // Between two empty lines before it; there is one only when there are none.
    if (std::count(lines.begin(), sum, "") == 2) {
        const auto first = std::find(lines.begin(), sum, "") + 1;
        std::transform(first, sum - 1, std::back_inserter(words.pictures),
                       [](const std::string& line) { return line.substr(2); });
    }
    const std::size_t folder = sum->find(in_folder);
    words.brought = sum->substr(0, sum->rfind(", ", folder));
    words.lost = sum->substr(folder + in_folder.size());
    words.lost.pop_back();
    for (auto line = sum; line != lines.end(); ++line) {
        if (line->starts_with("! ")) {
            words.said.push_back(line->substr(2));
        }
    }
    return words;
}
