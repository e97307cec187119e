// What came of a shoot.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "host/values/picture.h"
#include "host/values/problem.h"
#include "host/values/requests.h"
#include "host/values/shot.h"

namespace tether {

struct Report {
    unsigned int planned = 0;
    std::vector<host::Shot> shots;        // that were fired, or could not be; each when it was over
    std::vector<host::Picture> pictures;  // all that came, also late and unasked ones
    std::vector<std::string> troubles;    // each a sentence
    unsigned int losses = 0;              // of the camera
    bool sound = true;                    // false: one of the troubles is of the pictures' kind
    std::optional<host::Ended> ended;

    // A problem that was told beside the shots.
    void add(const host::Problem& problem);
    void add_trouble(const std::string& sentence);

    // Shots of which CAPTURE was sent.
    std::size_t fired() const;

    bool asked_for(const host::Picture& picture) const;

    // Every shot that was planned is complete, what was asked for is in force, and nothing else is
    // wrong with pictures.
    bool good() const;
};

}  // namespace tether
