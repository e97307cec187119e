// Where an argument is of the SDK's own type, its functions are found without their namespace.

#include "session/sony_worker.h"

void SonyWorker::OnConnected(SCRSDK::DeviceConnectionVersioin version) {
#if defined(MISUSE)
    Disconnect(version);
#else
    static_cast<void>(version);
#endif
}
