// Two threads that publish at once would tear the list of texts.

#include "session/sony_worker.h"

void SonyWorker::OnConnected(SCRSDK::DeviceConnectionVersioin) {
#if defined(MISUSE)
    camera_name.publish("MODEL-A");
#else
    static_cast<void>(camera_name.get());
#endif
}
