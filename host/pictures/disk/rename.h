// A rename that replaces nothing.
#pragma once

namespace host::pictures {

// An errno, or 0; EEXIST: something has that name, be it a link to nowhere.
int rename_without_replacing(int from_folder, const char* from, int to_folder, const char* to);

// The file system has no such rename.
bool knows_no_such_rename(int error);

}  // namespace host::pictures
