// The compiler checks what the seam declares; a name behind it would be unchecked.

#include "session/sdk.h"

void end_the_sdk() REQUIRES(main_thread) {
#if defined(MISUSE)
    SCRSDK::Release();
#else
    sdk::release();
#endif
}
