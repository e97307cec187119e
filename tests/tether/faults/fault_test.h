// A shoot that meets one of the facts.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "tests/tether/command_test.h"
#include "tests/tether/faults/closing_words.h"
#include "tests/tether/faults/facts.h"

class FaultTest : public CommandTest {
  protected:
    // Of tether shoot: the fact's own take the place of the usual ones.
    static std::vector<std::string> options_of(const Fact& fact) {
        std::vector<std::string> options{"--shots", "1"};
        for (const auto& more : {usual_options, fact.options}) {
            for (std::size_t index = 0; index < more.size(); index += 2) {
                const auto usual = std::find(options.begin(), options.end(), more[index]);
                if (usual != options.end()) {
                    usual[1] = more[index + 1];
                } else {
                    options.insert(options.end(), {more[index], more[index + 1]});
                }
            }
        }
        return options;
    }

    // Begins it, and makes happen what happens to the camera.
    void shoot(const Fact& fact, const std::vector<std::string>& options) {
        write("scene", usual_scene + std::string(fact.scene) + "\n");
        start_tether(options);
        for (const Moment& moment : fact.moments) {
            read_to(moment.after);
            if (moment.state != nullptr) {
                await_camera(moment.state);
            }
            for (const std::string& line : lines_of(std::string(moment.told) + "\n")) {
                tell_camera(line);
            }
        }
    }

    static bool makes_raw(const Fact& fact) {
        return std::any_of(fact.options.begin(), fact.options.end(),
                           [](const std::string& option) { return option == "both"; }) ||
               std::string(fact.form).starts_with("dial ") ||
               std::any_of(fact.moments.begin(), fact.moments.end(), [](const Moment& moment) {
                   return std::string(moment.told).starts_with("dial ");
               });
    }
};
