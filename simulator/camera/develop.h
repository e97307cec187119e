#pragma once

// Where the pictures come from: drawn by the picture module, or copies of the user's own, or of
// those that lie in the folder "pictures" beside this library when the module does not.

#include <string>

#include "simulator/sdk/lock.h"

namespace camera_sim {

enum class PictureKind { jpeg, raw, heif };

struct Picture {
    std::string model;
    std::string serial;
    unsigned number;
    unsigned taken;  // counts from 0; pictures of a folder come in turn by it
    long long time_seconds;
    int width;
    int height;
    unsigned seed;
    std::string own_pictures;  // the user's folder; empty when there is none
};

const char* ending(PictureKind kind);  // of the file's name

// Writes one picture into a new file; 0, or an errno value and no file: EEXIST when something lies
// at the path, ENOTSUP when there is no picture to be had and standard error has said why. Only the
// thread that transfers calls it, without the lock: a picture of full size takes a while.
int make_picture(const Picture& picture, PictureKind kind, const std::string& path);

}  // namespace camera_sim
