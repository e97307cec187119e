// What a shoot says at its end.
#pragma once

#include <string>
#include <vector>

std::vector<std::string> lines_of(const std::string& text);

struct Words {
    std::vector<std::string> pictures;  // a line each
    std::string brought;
    std::string lost;
    std::vector<std::string> said;
};

// `shots`: the folder of the shoot.
Words words_of(const std::string& output, const std::string& shots);
