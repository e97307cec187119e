// Brings a camera whose session has just come up in line with what the host asked for. Main thread
// only.

#include "session/sony_worker.h"

void SonyWorker::apply_settings() {
    // The session may have dropped between the post and now.
    if (!connected) {
        return;
    }
    apply_save_info();
    apply_store_destination();
    apply_pair_transfer(true);
}
