// Any bytes as a picture of any format: looking at it ends soon and stays inside, and says in a few
// words what is wrong.

#include "host/pictures/whole/whole.h"

#include <cstddef>
#include <cstdint>
#include <sys/mman.h>
#include <unistd.h>

#include "tests/worker/fuzz/require.h"

namespace {

using host::pictures::why_not_whole;

// One file in memory, written anew for each input.
int file_of(const std::uint8_t* data, std::size_t size) {
    static const int file = ::memfd_create("picture", MFD_CLOEXEC);
    require(
        ::ftruncate(file, 0) == 0 && ::pwrite(file, data, size, 0) == static_cast<ssize_t>(size),
        "the input is in a file");
    return file;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const int file = file_of(data, size);
    for (const char* name : {"a.JPG", "a.ARW", "a.HIF", "a.MP4", "a.XML"}) {
        const std::string why = why_not_whole(file, size, name);
        require(why.size() < 100, "what is wrong is said in a few words");
    }
    // A file that has shrunk since it was opened. Of other formats only what says where the data
    // lies is read.
    require(why_not_whole(file, size, "a.JPG").empty() ||
                !why_not_whole(file, size + 40000, "a.JPG").empty(),
            "missing bytes make nothing whole");
    require(size > 0 || !why_not_whole(file, 0, "a.XML").empty(), "an empty file is not whole");
    return 0;
}
