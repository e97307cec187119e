// The system calls by which a store looks at a disk and changes it, in the hands of a test: it can
// let one fail, or end the process before it.
#pragma once

#include <functional>
#include <string_view>
#include <sys/statvfs.h>

namespace disk_calls {

// Asked before each call, with its name; 0, or the errno that it is to fail with. While something
// is set here, files are written in two pieces and nothing is really synced: no test cuts the
// power.
extern std::function<int(std::string_view call)> before;

// In place of an errno: the call succeeds, and takes or gives at most so many bytes.
constexpr int at_most(int bytes) {
    return -1 - bytes;
}

// Asked before each reading at a place in a file; the same.
extern std::function<int()> before_reading;

// Asked before each call that locks, lists or looks at a file, with its name; the same.
extern std::function<int(std::string_view call)> before_looking;

// Changes what a file system says of itself.
extern std::function<void(struct statvfs& facts)> on_facts;

// A file system without a rename that replaces nothing.
extern bool no_exclusive_rename;

}  // namespace disk_calls
