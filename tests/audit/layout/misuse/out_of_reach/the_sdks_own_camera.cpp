// The operations of the SDK's objects cannot be annotated, so nobody holds such an object.

#include "session/sdk.h"

void publish(const char* name);

void publish_the_name(const sdk::CameraList& cameras) REQUIRES(main_thread) {
    const auto camera = cameras.camera(0);
#if defined(MISUSE)
    publish(camera.GetModel());
#else
    publish(camera.model());
#endif
}
