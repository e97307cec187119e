// A host of your own to begin with: takes one picture and prints where it is. In your CMake
// project:
//
//     set(BUILD_TESTING OFF)
//     add_subdirectory(camera-worker)
//     target_link_libraries(your-host PRIVATE camera_host)
//
// which also builds the worker, and the virtual camera behind it, to Contents/MacOS/sony-worker in
// your build folder. The library drains the worker's output, writes to it without a SIGPIPE and
// ends it whatever happens; what to make of its lines is up to you (docs/protocol.md).
#include <cstdio>

#include "host/process/fields.h"
#include "host/process/worker_process.h"

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: host-example WORKER FOLDER\n");
        return 2;
    }
    std::string error;
    const auto worker =
        host::WorkerProcess::start({argv[1], {argv[2], "-", "disk"}, {}, {}}, error);
    if (!worker) {
        std::fprintf(stderr, "%s\n", error.c_str());
        return 1;
    }
    worker->send("CONNECT");
    // An opening takes at most 20 s, a picture as long as your camera needs.
    while (const auto line = worker->next_line(host::after(std::chrono::seconds(30)))) {
        const auto fields = host::split_fields(line->text);
        if (fields[0] == "FILE_TYPE") {  // the last of the settings after a connection
            worker->send("CAPTURE");
        } else if (fields[0] == "DOWNLOADED") {
            std::printf("%s\n", host::unescape_field(fields[1]).c_str());
            return worker->end().exit.clean() ? 0 : 1;
        } else if (fields[0] == "ERROR") {
            std::fprintf(stderr, "%s\n", fields[1].c_str());
            return 1;
        }
    }
    std::fputs(worker->output_ended() ? "the worker has ended\n" : "nothing was heard for 30 s\n",
               stderr);
    return 1;
}
