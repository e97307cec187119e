// What the doctor asks the system it runs on. A test answers in the system's place.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace doctor {

struct Answer {
    int status;        // not 0: something is wrong, or the command could not be run
    std::string text;  // both outputs
};

struct System {
    bool is_macos;
    std::function<Answer(const std::vector<std::string>& command)> run;
};

System this_system();

}  // namespace doctor
