// The names that other files may write stand for two types, whatever they are called.

#include "session/sdk.h"

#if defined(MISUSE)
namespace camera = SCRSDK;

void end_the_sdk() REQUIRES(main_thread) {
    camera::Release();
}
#endif
