// Bringing in what a staging folder holds and nobody has reported.
#pragma once

#include <functional>
#include <string>

#include "host/pictures/folder.h"
#include "host/pictures/recovery.h"

namespace host::pictures {

// `over`: no worker writes there any more; otherwise a file that is not whole is left, as it may be
// on its way. `spared`: names that are left, because somebody is about to place them. What is no
// picture stays and is named in a problem once.
Found sweep(Run& run, bool over, const std::function<bool(const std::string&)>& spared,
            TimeOfDay now);

// Removes the staging folder if nothing is in it any more.
bool remove_staging(const Run& run);

// What to say of pictures that nobody has examined for the host.
std::vector<Problem> about_damaged(const std::vector<Picture>& pictures);

}  // namespace host::pictures
