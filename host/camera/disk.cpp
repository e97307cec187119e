#include "host/camera/disk.h"

#include <thread>
#include <utility>

#include "host/camera/signals.h"

namespace host {
namespace {

constexpr std::chrono::seconds time_to_end{2};

}  // namespace

Disk::Disk(DiskWork work, std::shared_ptr<Inbox> inbox) : hurry_(std::exchange(work.hurry, {})) {
    std::thread([shared = shared_, work = std::move(work), inbox = std::move(inbox)]() mutable {
        block_signals();
        run(*shared, work, *inbox);
        // Before the end is known: the locks that the work holds are free then.
        work = {};
        {
            const MutexLock lock(shared->mutex);
            shared->ended = true;
        }
        shared->changed.notify_all();
    }).detach();
}

Disk::~Disk() {
    hurry_();
    hurry_ = {};
    const TimePoint deadline = host::after(time_to_end);
    const MutexLock lock(shared_->mutex);
    shared_->ending = true;
    shared_->changed.notify_all();
    while (!shared_->ended && shared_->mutex.wait_until(shared_->changed, deadline)) {}
}

void Disk::ask(FileWork work) {
    post(std::move(work));
}

void Disk::list(ListWork work) {
    post(std::move(work));
}

void Disk::post(Task task) {
    {
        const MutexLock lock(shared_->mutex);
        shared_->tasks.push_back(std::move(task));
    }
    shared_->changed.notify_all();
}

bool Disk::next(Shared& shared, Task& task) {
    const MutexLock lock(shared.mutex);
    while (shared.tasks.empty() && !shared.ending) {
        shared.mutex.wait(shared.changed);
    }
    if (shared.tasks.empty()) {
        return false;
    }
    task = std::move(shared.tasks.front());
    shared.tasks.pop_front();
    return true;
}

void Disk::run(Shared& shared, const DiskWork& work, Inbox& inbox) {
    for (Task task; next(shared, task);) {
        if (const auto* list = std::get_if<ListWork>(&task)) {
            inbox.post(Listed{list->number, work.list(*list)});
        } else if (auto answer = work.file_work(std::get<FileWork>(task))) {
            inbox.post(std::move(*answer));
        }
    }
}

}  // namespace host
