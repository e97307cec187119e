// What a start finds in the ledger and in the folder after the program, the worker or both were
// killed.
#pragma once

#include <vector>

#include "host/pictures/folder.h"
#include "host/values/picture.h"
#include "host/values/problem.h"
#include "host/values/time.h"

namespace host::pictures {

struct Found {
    std::vector<Picture> pictures;
    std::vector<Problem> problems;
};

// Reads the ledger into the folder, and brings placings that were cut to their end. Found are the
// pictures that were placed and never told, in the order in which they were placed. An errno, and
// nothing is changed, when the ledger cannot be read; or 0.
int recover(Folder& folder, TimeOfDay now, Found& found);

}  // namespace host::pictures
