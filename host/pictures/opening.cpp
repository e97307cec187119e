// Folders, from a path that somebody has typed to one that is ours alone.
#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <set>
#include <sys/statvfs.h>
#include <thread>
#include <unistd.h>
#include <utility>

#include "host/pictures/disk/lock.h"
#include "host/pictures/disk/regular_file.h"
#include "host/pictures/folder.h"
#include "host/pictures/left_runs.h"
#include "host/pictures/recovery.h"
#include "host/pictures/store.h"
#include "host/pictures/sweeping.h"
#include "host/process/clock.h"
#include "host/process/command.h"
#include "host/values/utf8.h"

namespace host::pictures {
namespace {

constexpr std::chrono::milliseconds between_looks{20};
// As long as the name of any run.
constexpr const char* some_run = "run-20240501-123456-0123456789abcdef";

Problem not_taken(const std::string& path, const std::string& why) {
    return {Code::folder_not_taken, "The folder " + path + " is not taken: " + why + ".", {}, {}};
}

Problem not_usable(const std::string& path, int error) {
    if (error == EACCES || error == EPERM || error == EROFS) {
        return {Code::folder_not_permitted,
                "The folder " + path + " cannot be written to: " + in_words(error) + ".",
                {},
                {}};
    }
    return not_taken(path, in_words(error));
}

std::string resolved(const std::string& path) {
    char* const text = ::realpath(path.c_str(), nullptr);
    std::string real = text == nullptr ? "" : text;
    std::free(text);
    return real;
}

std::string why_no_path(const std::string& path) {
    if (!is_utf8(path)) {
        return "its path is not UTF-8";
    }
    std::string error;
    const std::string staging = path + "/" + incoming_name + "/" + some_run;
    if (!write_command("SET_DOWNLOAD_DIR", {staging}, error)) {
        return "its path is too long: " + error;
    }
    return {};
}

// The folder's own path, links resolved; its last part is made where it is missing.
std::string make_path(const std::string& wanted, std::optional<Problem>& problem) {
    if (wanted.empty() || wanted.find('\0') != std::string::npos) {
        problem = not_taken(escape_bytes(wanted), "it has no name");
        return {};
    }
    std::string path = resolved(wanted);
    int error = path.empty() ? errno : 0;
    const bool missing = error == ENOENT;
    if (missing) {
        const std::size_t end = wanted.find_last_not_of('/') + 1;
        const std::size_t slash = wanted.rfind('/', end == 0 ? 0 : end - 1);
        const std::string last = wanted.substr(slash == std::string::npos ? 0 : slash + 1,
                                               end - (slash == std::string::npos ? 0 : slash + 1));
        const std::string above =
            resolved(slash == std::string::npos ? "." : wanted.substr(0, slash + 1));
        if (above.empty()) {
            problem = not_taken(wanted, "the folder that it is to lie in is not there");
            return {};
        }
        path = (above == "/" ? "" : above) + "/" + last;
        error = 0;
    }
    const std::string why = error == 0 ? why_no_path(path) : "";
    if (!why.empty()) {
        problem = not_taken(escape_bytes(wanted), why);
        return {};
    }
    if (error == 0 && missing && ::mkdir(path.c_str(), 0777) != 0) {
        error = errno;
    }
    if (error != 0) {
        problem = not_usable(escape_bytes(wanted), error);
        return {};
    }
    return path;
}

std::optional<Problem> open_itself(Folder& folder) {
    folder.itself = Descriptor(::open(folder.path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    struct stat facts {};
    if (!folder.itself.is_open() || ::fstat(folder.itself.number(), &facts) != 0) {
        return errno == ENOTDIR ? not_taken(folder.path, "it is not a folder")
                                : not_usable(folder.path, errno);
    }
    folder.identity = identity_of(facts);
    return std::nullopt;
}

bool is_writable(int folder) {
    struct statvfs facts {};
    return ::faccessat(folder, ".", W_OK | X_OK, 0) == 0 && ::fstatvfs(folder, &facts) == 0 &&
           (facts.f_flag & ST_RDONLY) == 0;
}

std::optional<Problem> make_incoming(Folder& folder) {
    if (::faccessat(folder.itself.number(), ".", W_OK | X_OK, 0) != 0) {
        return not_usable(folder.path, errno);
    }
    if (::mkdirat(folder.itself.number(), incoming_name, S_IRWXU) != 0 && errno != EEXIST) {
        return not_usable(folder.path, errno);
    }
    int error = 0;
    folder.incoming = pictures::open_folder(folder.itself.number(), incoming_name, error);
    if (error == ENOTDIR || error == ELOOP) {
        return not_taken(folder.path, std::string("its ") + incoming_name + " is not a folder");
    }
    return error == 0 ? std::nullopt : std::optional(not_usable(folder.path, error));
}

std::optional<Problem> open_ledger(Folder& folder) {
    const int error = folder.ledger.open(folder.incoming.number(), ledger_name);
    if (error == EINVAL) {
        return not_taken(folder.path, std::string("its ") + incoming_name + "/" + ledger_name +
                                          " is not a file");
    }
    return error == 0 ? std::nullopt : std::optional(not_usable(folder.path, error));
}

bool still_named(const Folder& folder, const Descriptor& lock) {
    struct stat open {};
    struct stat named {};
    return ::fstat(lock.number(), &open) == 0 &&
           ::fstatat(folder.incoming.number(), lock_name, &named, AT_SYMLINK_NOFOLLOW) == 0 &&
           identity_of(open) == identity_of(named);
}

Problem in_use(const Folder& folder, const Lock& lock) {
    const pid_t process = read_note(lock.file.number()).process;
    return {Code::folder_in_use,
            "The folder " + folder.path + " is used by another program" +
                (process > 0 ? ", process " + std::to_string(process) : std::string()) + ".",
            {},
            {}};
}

void append(Found& all, Found more) {
    std::move(more.pictures.begin(), more.pictures.end(), std::back_inserter(all.pictures));
    for (Problem& problem : more.problems) {
        if (std::find(all.problems.begin(), all.problems.end(), problem) == all.problems.end()) {
            all.problems.push_back(std::move(problem));
        }
    }
}

}  // namespace

FileAnswer Store::open_folder(const OpenFolder& work) {
    auto folder = std::make_shared<Folder>();
    std::optional<Problem> problem;
    folder->path = make_path(work.folder, problem);
    if (!problem) {
        problem = open_itself(*folder);
    }
    if (problem) {
        return FolderNotOpened{work.ticket, *problem};
    }
    const auto known =
        std::find_if(folders_.begin(), folders_.end(), [&](const std::shared_ptr<Folder>& one) {
            return one->identity == folder->identity && one->has_incoming();
        });
    if (known == folders_.end()) {
        return take_folder(work.ticket, std::move(folder));
    }
    Folder& open = **known;
    open.open = true;
    // Its path may have changed; one that still leads there is the one that everybody knows.
    if (!open.is_there()) {
        open.path = folder->path;
    }
    std::rotate(known, std::next(known), folders_.end());
    return FolderOpened{work.ticket, open.path, {}, {}, open.last_shot, open.room()};
}

std::optional<Problem> Store::lock_folder(Ticket ticket, Folder& folder) const {
    const TimePoint deadline = after(options_.folder_in_use);
    for (bool told = !options_.folder_waited_for;;) {
        Lock lock = take_lock(folder.incoming.number(), lock_name);
        if (lock.taken == Taken::no) {
            return lock.error == EINVAL
                       ? not_taken(folder.path, std::string("its ") + incoming_name + "/" +
                                                    lock_name + " is not a file")
                       : not_usable(folder.path, lock.error);
        }
        if (lock.taken == Taken::yes && still_named(folder, lock.file)) {
            write_note(lock.file.number(), {::getpid(), {}});
            folder.lock = std::move(lock.file);
            return std::nullopt;
        }
        if (hurried_ || Clock::now() >= deadline) {
            return in_use(folder, lock);
        }
        if (!std::exchange(told, true)) {
            options_.folder_waited_for(ticket, in_use(folder, lock));
        }
        std::this_thread::sleep_for(between_looks);
    }
}

FileAnswer Store::take_folder(Ticket ticket, std::shared_ptr<Folder> folder) {
    std::optional<Problem> problem = make_incoming(*folder);
    if (!problem) {
        problem = lock_folder(ticket, *folder);
    }
    if (!problem) {
        problem = open_ledger(*folder);
    }
    Found found;
    std::set<std::string> runs;
    if (!problem) {
        // What cannot be read now is read at the next try. Without it, shots would be numbered
        // anew, pictures told under other ids, and files left behind that nobody names.
        int error = list_runs(*folder, runs);
        error = error == 0 ? recover(*folder, now(), found) : error;
        problem = error == 0 ? std::nullopt : std::optional(not_usable(folder->path, error));
    }
    if (problem) {
        return FolderNotOpened{ticket, *problem};
    }
    append(found, take_over_left_runs(folder, runs, options_, hurried_, now()));
    append(found, {{}, about_damaged(found.pictures)});
    FolderOpened opened{ticket,         folder->path,      std::move(found.pictures),
                        found.problems, folder->last_shot, folder->room()};
    // A folder that has gone keeps its path for its runs only.
    for (const std::shared_ptr<Folder>& other : folders_) {
        other->open = other->open && other->path != folder->path;
    }
    folders_.push_back(std::move(folder));
    return opened;
}

void Store::close_folder(const std::string& path) {
    if (const std::shared_ptr<Folder> folder = folder_at(path)) {
        folder->open = false;
    }
}

FolderLooked Store::look(const LookAtFolder& work) const {
    FolderLooked looked;
    looked.ticket = work.ticket;
    struct stat facts {};
    looked.there = ::stat(work.folder.c_str(), &facts) == 0 && S_ISDIR(facts.st_mode);
    const std::shared_ptr<Folder> folder = folder_at(work.folder);
    if (folder != nullptr && looked.there) {
        looked.same = identity_of(facts) == folder->identity && can_be_shot_into(*folder);
        looked.writable = looked.same && is_writable(folder->itself.number());
        looked.room = folder->room().value_or(0);
    }
    return looked;
}

// The worker's staging folder is where it was made: a shot into another would be lost.
bool Store::can_be_shot_into(const Folder& folder) const {
    return folder.has_incoming() && std::all_of(runs_.begin(), runs_.end(), [&](const auto& one) {
               const Run& run = *one.second;
               return run.folder.get() != &folder || is_stood_in(run) || run.has_staging();
           });
}

std::shared_ptr<Folder> Store::folder_at(const std::string& path) const {
    const auto found = std::find_if(
        folders_.begin(), folders_.end(),
        [&](const std::shared_ptr<Folder>& one) { return one->open && one->path == path; });
    return found == folders_.end() ? nullptr : *found;
}

}  // namespace host::pictures
