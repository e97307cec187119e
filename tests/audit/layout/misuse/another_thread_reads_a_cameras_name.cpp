// A camera is asked for its name through the SDK, each time.

#include <string>
#include <thread>

#include "session/sdk.h"

void publish(const char* name);

void publish_the_name(const sdk::CameraList& cameras) REQUIRES(main_thread) {
    const auto camera = cameras.camera(0);
#if defined(MISUSE)
    std::thread([camera] { publish(camera.model()); }).detach();
#else
    publish(camera.model());
#endif
}
