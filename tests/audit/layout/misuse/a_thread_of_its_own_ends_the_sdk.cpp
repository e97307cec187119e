// Started by the main thread, it does not inherit the right to talk to the camera.

#include <thread>

#include "session/sdk.h"

void end_the_sdk() REQUIRES(main_thread) {
#if defined(MISUSE)
    std::thread([] { sdk::release(); }).detach();
#else
    sdk::release();
#endif
}
