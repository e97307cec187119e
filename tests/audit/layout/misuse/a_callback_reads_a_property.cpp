// A property is read through the SDK, and the answer is lent by it.

#include "session/sony_worker.h"
#include "settings/property_codes.h"
#include "threads/command_queue.h"

void SonyWorker::OnPropertyChangedCodes(sdk::ChangeCount, sdk::ChangedCodes) {
#if defined(MISUSE)
    read_prop(property::file_type, property::unreadable);
#else
    post_command("__FILETYPE_CHECK");
#endif
}
