#include "session/sony_worker.h"

void SonyWorker::OnError(sdk::ErrorCode) {
    OnLvPropertyChanged();
}
