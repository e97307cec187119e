// When it goes, it is handed back.

#include "session/sdk.h"

void forget(sdk::CameraList& cameras) {
#if defined(MISUSE)
    cameras.~CameraList();
#else
    static_cast<void>(cameras.result());
#endif
}
