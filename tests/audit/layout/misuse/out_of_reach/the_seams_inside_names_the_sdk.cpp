// What the seam needs for itself opens nothing.

#include "session/sdk.h"

void end_the_sdk() REQUIRES(main_thread) {
#if defined(MISUSE)
    sdk::headers::Release();
#else
    sdk::release();
#endif
}
