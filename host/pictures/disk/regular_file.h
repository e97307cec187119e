// Opening files of our own below a folder that others can write to: never through a link, never
// waiting for the other end of a pipe.
#pragma once

#include "host/process/pipe.h"

namespace host::pictures {

// A closed descriptor and an errno in `error` where it cannot be opened, EINVAL where it is no
// regular file; otherwise `error` is 0. What O_CREAT makes is for its owner only.
Descriptor open_regular(int folder, const char* name, int flags, int& error);

// A folder, not a link to one.
Descriptor open_folder(int folder, const char* name, int& error);

}  // namespace host::pictures
