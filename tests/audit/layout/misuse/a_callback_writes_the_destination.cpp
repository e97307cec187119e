// The main thread may be reading the word at that moment.

#include "session/sony_worker.h"
#include "threads/command_queue.h"

void SonyWorker::OnWarning(sdk::WarningCode) {
#if defined(MISUSE)
    save_destination = "disk";
#else
    post_command("SAVE_DEST|disk");
#endif
}
