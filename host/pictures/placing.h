// One staged file to its place, so that a kill at any moment leaves it in one place, whole, and the
// ledger knowing which.
#pragma once

#include <string>
#include <string_view>
#include <variant>

#include "host/pictures/folder.h"
#include "host/pictures/naming/name_template.h"
#include "host/values/picture.h"
#include "host/values/problem.h"

namespace host::pictures {

// Of the picture all is given but its id, its path and when it was placed.
struct ToPlace {
    int staging = -1;
    std::string run;
    std::string name;  // in the staging folder
    FileFacts file;
    Picture picture;
    std::string name_template;
    std::optional<Spot> spot;  // instead of what the template says
};

// The picture with its absolute path; or a problem that names where the file is now.
std::variant<Picture, Problem> place(Folder& folder, const ToPlace& file, TimeOfDay now);

// Removes the empty file that a placing that was cut has left in the place of the picture: what has
// its name and is no older than the line that announced it, when the name was free.
void clear_reservation(const Folder& folder, const Placing& cut);

// Of a path from the folder.
Spot spot_of(std::string_view path);

// A folder below, made where it is missing; a part of it that is a link is no way out.
Descriptor open_below(int folder, std::string_view path, bool make, int& error);

}  // namespace host::pictures
