#include "session/sony_worker.h"

void SonyWorker::OnError(sdk::ErrorCode) {
    main_thread.assume();
    disconnect(false);
}
