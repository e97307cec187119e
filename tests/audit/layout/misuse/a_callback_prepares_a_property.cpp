// The SDK makes and destroys the object.

#include "session/sony_worker.h"

void SonyWorker::OnWarning(sdk::WarningCode) {
#if defined(MISUSE)
    sdk::Property property;
#endif
}
