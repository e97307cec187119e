// A disk can be stuck for as long as it likes: that is a problem, and nobody waits for it.
#include <algorithm>
#include <utility>

#include "host/brain/brain.h"

namespace host::brain {

Ticket Brain::ask_disk(FileWork work, Time patience) {
    if (disk_patience_.empty()) {
        disk_deadline_ = now_ + patience;
    }
    disk_patience_.push_back(patience);
    do_now(std::move(work));
    return last_ticket_;
}

void Brain::sweep(const std::string& run, bool over) {
    ++sweeps_;
    ask_disk(SweepRun{++last_ticket_, run, over}, times_.disk_sweep);
}

void Brain::disk_answered() {
    if (!disk_patience_.empty()) {
        disk_patience_.pop_front();
    }
    disk_deadline_ = disk_patience_.empty() ? never : now_ + disk_patience_.front();
    if (std::exchange(disk_stuck_, false)) {
        clear(Code::folder_gone);
    }
}

void Brain::strike_disk() {
    if (now_ < disk_deadline_) {
        return;
    }
    disk_deadline_ = never;
    disk_stuck_ = true;
    raise({Code::folder_gone, "The disk of the folder does not answer.", {}, {}});
}

}  // namespace host::brain
