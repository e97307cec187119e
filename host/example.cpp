// A host of your own to begin with: takes one picture and prints its files, or why there are none.
// In your CMake project:
//
//     set(BUILD_TESTING OFF)
//     add_subdirectory(camera-worker)
//     target_link_libraries(your-host PRIVATE camera_host)
//
// which also builds the worker, and the virtual camera behind it, to Contents/MacOS/sony-worker in
// your build folder. Reconnecting, pairing, keeping pictures safe and ending the worker is all done
// behind host::Camera; host/camera.h says what it tells and takes.
#include <cstdio>

#include "host/camera.h"

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: host-example WORKER FOLDER\n");
        return 2;
    }
    host::CameraOptions options;
    options.worker = argv[1];
    options.wishes.folder = argv[2];
    host::Camera camera(options);
    if (const auto problem = camera.connect()) {
        std::fprintf(stderr, "%s\n", problem->text.c_str());
        return 1;
    }
    const host::Shot shot = camera.capture();
    for (const host::Picture& picture : shot.pictures) {
        std::printf("%s\n", picture.path.c_str());
    }
    for (const host::Problem& problem : shot.problems) {
        std::fprintf(stderr, "%s\n", problem.text.c_str());
    }
    return shot.status == host::ShotStatus::complete ? 0 : 1;
}
