// The main thread may be handing the list back at that moment.

#include "session/sony_worker.h"

namespace {
sdk::CameraList* found = nullptr;
}

void SonyWorker::OnConnected(SCRSDK::DeviceConnectionVersioin) {
#if defined(MISUSE)
    static_cast<void>(found->camera(0));
#else
    static_cast<void>(found->result());
#endif
}
