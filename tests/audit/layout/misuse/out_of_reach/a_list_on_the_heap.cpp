// Whoever deletes it hands it back, and the compiler does not look there.

#include "session/sdk.h"

void look() REQUIRES(main_thread) {
#if defined(MISUSE)
    static_cast<void>(new sdk::CameraList);
#else
    sdk::CameraList cameras;
#endif
}
