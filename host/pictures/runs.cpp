// Runs: a staging folder for each worker, and the lock that says that the worker lives.
#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <random>
#include <unistd.h>
#include <utility>

#include "host/pictures/disk/lock.h"
#include "host/pictures/disk/regular_file.h"
#include "host/pictures/folder.h"
#include "host/pictures/left_runs.h"
#include "host/pictures/store.h"
#include "host/pictures/sweeping.h"
#include "host/values/iso_time.h"

namespace host::pictures {
namespace {

Problem no_run(const Folder& folder, int error) {
    const bool forbidden = error == EACCES || error == EPERM || error == EROFS;
    return {forbidden ? Code::folder_not_permitted : Code::folder_not_taken,
            "No place for pictures can be made in " + folder.path + ": " + in_words(error) + ".",
            {},
            {}};
}

Problem gone(const std::string& path) {
    return {Code::folder_gone, "The folder " + path + " was moved, deleted or ejected.", {}, {}};
}

// Unlike that of any other run, also of one that is forgotten.
std::string draw_name(TimeOfDay now) {
    static std::random_device source;
    std::string time = iso_time(now).substr(0, 19);
    time.erase(std::remove_if(time.begin(), time.end(),
                              [](char letter) { return letter == '-' || letter == ':'; }),
               time.end());
    std::replace(time.begin(), time.end(), 'T', '-');
    return std::string(run_prefix) + time + "-" +
           write_id(std::uint64_t{source()} << 32 | source());
}

const Run& holder_of_lock(const Run& run) {
    const Run* holder = &run;
    while (holder->moved_from != nullptr) {
        holder = holder->moved_from.get();
    }
    return *holder;
}

}  // namespace

std::optional<Problem> Store::make_run(Run& run) const {
    const int incoming = run.folder->incoming.number();
    Lock lock = take_lock(incoming, lock_of(run.name).c_str());
    if (lock.taken != Taken::yes) {
        return no_run(*run.folder, lock.taken == Taken::no ? lock.error : EBUSY);
    }
    int error = 0;
    if (run.moved_from != nullptr) {
        const Run& holder = holder_of_lock(run);
        error = write_note(lock.file.number(),
                           {holder.process, holder.folder->path + "/" + incoming_name + "/" +
                                                lock_of(holder.name)});
    }
    if (error == 0 && ::mkdirat(incoming, run.name.c_str(), S_IRWXU) != 0) {
        error = errno;
    }
    if (error == 0) {
        run.staging = pictures::open_folder(incoming, run.name.c_str(), error);
    }
    struct stat facts {};
    if (error == 0 && ::fstat(run.staging.number(), &facts) != 0) {
        error = errno;
    }
    run.identity = identity_of(facts);
    if (error != 0) {
        if (remove_staging(run)) {
            remove_lock(*run.folder, run.name);
        }
        return no_run(*run.folder, error);
    }
    run.lock = std::move(lock.file);
    return std::nullopt;
}

FileAnswer Store::open_run(const OpenRun& work) {
    auto run = std::make_shared<Run>();
    run->folder = folder_at(work.folder);
    if (run->folder == nullptr || !run->folder->is_there()) {
        return RunNotOpened{work.ticket, gone(work.folder)};
    }
    if (!work.moved_from.empty()) {
        const auto from = runs_.find(work.moved_from);
        if (from == runs_.end()) {
            return RunNotOpened{work.ticket,
                                {Code::folder_not_taken, "The worker has gone.", {}, {}}};
        }
        run->moved_from = from->second;
    }
    run->name = draw_name(now());
    if (const auto problem = make_run(*run)) {
        return RunNotOpened{work.ticket, *problem};
    }
    runs_.emplace(run->name, run);
    return RunOpened{work.ticket, run->name, run->staging_path(), run->lock.number()};
}

void Store::begin_run(const RunBegun& work) {
    const auto found = runs_.find(work.run);
    if (found == runs_.end() || !found->second->lock.is_open()) {
        return;
    }
    Run& run = *found->second;
    run.process = static_cast<pid_t>(work.process);
    // Without the number the worker is still known by its lock.
    write_note(run.lock.number(), {run.process, {}});
    run.lock.close();
}

RunSwept Store::sweep_run(const SweepRun& work) {
    const auto found = runs_.find(work.run);
    if (found == runs_.end()) {
        return {work.ticket, {}, {}};
    }
    const std::shared_ptr<Run> run = found->second;
    const auto is_pending = [&](const std::string& name) {
        return !work.over && std::any_of(pending_.begin(), pending_.end(), [&](const auto& one) {
            return one.second.run == run && one.second.name == name;
        });
    };
    Found swept = sweep(*run, work.over, is_pending, now());
    std::vector<Problem> damaged = about_damaged(swept.pictures);
    std::move(damaged.begin(), damaged.end(), std::back_inserter(swept.problems));
    if (work.over) {
        forget_run(run);
    }
    return {work.ticket, std::move(swept.pictures), std::move(swept.problems)};
}

// A later run stands under the lock of this one.
bool Store::is_stood_in(const Run& run) const {
    return std::any_of(runs_.begin(), runs_.end(), [&](const auto& other) {
        for (const Run* from = other.second->moved_from.get(); from != nullptr;
             from = from->moved_from.get()) {
            if (from == &run) {
                return true;
            }
        }
        return false;
    });
}

// Runs that the worker was moved to go on without it: a host that changes its folder every minute
// keeps nothing open of the folders of before. The first run stays for as long as any of them, with
// its folder: the worker holds its lock, and another program would end the worker for it.
void Store::let_go_of(const std::shared_ptr<Run>& run) {
    if (run->moved_from == nullptr) {
        return;
    }
    for (const auto& [name, other] : runs_) {
        if (other->moved_from == run) {
            other->moved_from = run->moved_from;
        }
    }
    // Nobody else has its lock. Left behind beside a staging folder that holds something, it would
    // lead the next program to the worker, which does not write there any more.
    remove_lock(*run->folder, run->name);
    run->lock.close();
}

void Store::forget_run(const std::shared_ptr<Run>& run) {
    run->over = true;
    for (auto pending = pending_.begin(); pending != pending_.end();) {
        pending = pending->second.run == run ? pending_.erase(pending) : std::next(pending);
    }
    runs_.erase(run->name);
    run->empty = remove_staging(*run);
    let_go_of(run);
    // The lock that the worker holds goes with the last of its runs.
    const Run& first = holder_of_lock(*run);
    if (first.over && first.empty && !is_stood_in(first)) {
        remove_lock(*first.folder, first.name);
    }
}

}  // namespace host::pictures
