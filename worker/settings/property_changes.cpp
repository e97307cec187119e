// Changes that the camera reports, on an SDK thread: what needs the camera is posted to the main
// thread.

#include <cstdint>

#include "session/sony_worker.h"
#include "settings/property_codes.h"
#include "threads/command_queue.h"

void SonyWorker::OnPropertyChangedCodes(sdk::ChangeCount count, sdk::ChangedCodes codes) {
    if (codes == nullptr) {
        return;
    }
    bool card_changed = false;
    bool file_type_changed = false;
    for (std::uint32_t index = 0; index < static_cast<std::uint32_t>(count); ++index) {
        const auto code = static_cast<std::uint32_t>(codes[index]);
        card_changed |= code == property::first_card_status || code == property::second_card_status;
        file_type_changed |= code == property::file_type;
    }
    // Once each, however often a code occurs, and the card first.
    if (card_changed) {
        post_command("__CARD_CHECK");
    }
    if (file_type_changed) {
        post_command("__FILETYPE_CHECK");
    }
}
