#include "host/pictures/placing.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <random>
#include <unistd.h>

#include "host/pictures/disk/regular_file.h"
#include "host/pictures/disk/rename.h"
#include "host/pictures/disk/sync.h"
#include "host/pictures/naming/stems.h"
#include "host/pictures/store.h"
#include "host/values/iso_time.h"

namespace host::pictures {
namespace {

// Strangers that make files of the very names that are about to be used.
constexpr unsigned int most_tries = 100;

std::uint64_t draw() {
    static std::random_device source;
    return std::uint64_t{source()} << 32 | source();
}

// What the file system dates files by.
std::int64_t wall_clock() {
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    return std::int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
}

class Placer {
  public:
    Placer(Folder& folder, const ToPlace& file) : folder_(folder), file_(file) {
        line_.picture = file.picture;
        line_.run = file.run;
        line_.from = file.name;
        line_.file = file.file;
    }

    std::variant<Picture, Problem> place(TimeOfDay now);

  private:
    // An errno, or 0. Says in moved_ whether the file is in its place all the same.
    int choose_spot(TimeOfDay now);
    int choose_name();
    int try_name();
    int move_excluding();
    int move_over_reservation();
    int sync() const;

    Problem not_placed(int error) const;
    const char* from() const {
        return file_.name.c_str();
    }

    Folder& folder_;
    const ToPlace& file_;
    Placing line_;
    Spot spot_;
    bool of_known_pair_ = false;      // and not tried under its stem yet
    std::uint64_t least_number_ = 1;  // of a stem that was not tried yet
    std::string name_;                // in target_
    Descriptor target_;
    bool moved_ = false;
};

int Placer::choose_spot(TimeOfDay now) {
    const auto cut = folder_.unfinished.find(file_.run + "/" + file_.name);
    if (cut != folder_.unfinished.end() && (cut->second.file.identity == file_.file.identity ||
                                            is_same_file(cut->second.file, file_.file))) {
        // The same picture once more, be it that it has grown: it keeps its id. Under another one
        // the next start would find it in the place of the first try, and tell it twice.
        line_.picture.id = cut->second.picture.id;
        clear_reservation(folder_, cut->second);
    } else {
        line_.picture.id = write_id(draw());
    }
    if (line_.picture.pair.empty()) {
        line_.picture.pair = line_.picture.id;
    }
    line_.picture.at = iso_time(now);
    line_.picture.bytes = file_.file.bytes;
    if (const Pair* pair = folder_.pairs.named(line_.picture.pair)) {
        spot_ = {pair->folder, pair->stem};
        of_known_pair_ = true;
    } else if (file_.spot) {
        spot_ = *file_.spot;
    } else {
        // Whoever asks for a name has had it looked at before; a picture is never lost to one.
        const bool usable = why_no_name(file_.name_template).empty();
        const std::string name = usable ? file_.name_template : "";
        line_.number = has_number(name) ? folder_.last_number + 1 : 0;
        spot_ = spot_for(name,
                         {std::string(stem_of(file_.name)), line_.picture.shot, line_.number, now});
    }
    int error = 0;
    target_ = open_below(folder_.itself.number(), spot_.folder, true, error);
    return error;
}

// After one that the disk has, although no name in the folder looks like it, the next: a disk may
// take for the same what is not the same here.
int Placer::choose_name() {
    const std::string ending(ending_of(file_.name));
    name_ = spot_.stem + ending;
    int error = 0;
    if (of_known_pair_ && !is_taken(target_.number(), name_)) {
        of_known_pair_ = false;
        least_number_ = 2;
    } else {
        const FreeStem free = free_stem(target_.number(), spot_.stem, ending, least_number_);
        name_ = free.stem + ending;
        least_number_ = free.number + 1;
        error = free.error;
    }
    line_.picture.path = spot_.folder.empty() ? name_ : spot_.folder + "/" + name_;
    return error;
}

// Everything is written down before it is done.
int Placer::try_name() {
    if (folder_.renames_excluding) {
        const int error = move_excluding();
        if (!knows_no_such_rename(error)) {
            return error;
        }
        folder_.renames_excluding = false;
    }
    line_.reserves = true;
    line_.written = wall_clock();
    return move_over_reservation();
}

int Placer::move_excluding() {
    if (const int error = folder_.ledger.append(line_)) {
        return error;
    }
    const int error =
        rename_without_replacing(file_.staging, from(), target_.number(), name_.c_str());
    moved_ = error == 0;
    return error;
}

int Placer::move_over_reservation() {
    if (const int error = folder_.ledger.append(line_)) {
        return error;
    }
    const Descriptor reserved(::openat(target_.number(), name_.c_str(),
                                       O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666));
    if (!reserved.is_open()) {
        return errno;
    }
    // Somebody may have put something else there, or have begun to write into it.
    const auto still_ours = [&] {
        struct stat made {};
        struct stat named {};
        return ::fstat(reserved.number(), &made) == 0 && made.st_size == 0 &&
               ::fstatat(target_.number(), name_.c_str(), &named, AT_SYMLINK_NOFOLLOW) == 0 &&
               identity_of(made) == identity_of(named);
    };
    if (!still_ours()) {
        return EEXIST;
    }
    if (::renameat(file_.staging, from(), target_.number(), name_.c_str()) != 0) {
        const int error = errno;
        if (still_ours()) {
            ::unlinkat(target_.number(), name_.c_str(), 0);
        }
        return error == EEXIST ? EIO : error;
    }
    moved_ = true;
    return 0;
}

int Placer::sync() const {
    int error = 0;
    const Descriptor file = open_regular(target_.number(), name_.c_str(), O_RDONLY, error);
    if (error == 0) {
        error = sync_file(file.number());
    }
    return error != 0 ? error : sync_file(target_.number());
}

Problem Placer::not_placed(int error) const {
    const std::string place = moved_ ? path_now(target_.number(), folder_.path) + "/" + name_
                                     : path_now(file_.staging, folder_.path) + "/" + file_.name;
    const std::string what = moved_ ? "The disk does not confirm a picture: "
                                    : "A picture could not be brought to its place: ";
    return {Code::picture_not_placed,
            what + in_words(error) + ". It is now " + place,
            {},
            file_.picture.shot};
}

std::variant<Picture, Problem> Placer::place(TimeOfDay now) {
    if (!folder_.is_there()) {
        return Problem{Code::folder_gone,
                       "The folder was moved, deleted or ejected. A picture is now " +
                           path_now(file_.staging, folder_.path) + "/" + file_.name,
                       {},
                       file_.picture.shot};
    }
    int error = choose_spot(now);
    if (error == 0) {
        error = EEXIST;
    }
    for (unsigned int tries = 0; error == EEXIST && tries < most_tries; ++tries) {
        error = choose_name();
        if (error == 0) {
            error = try_name();
        }
    }
    const std::string key = file_.run + "/" + file_.name;
    if (!moved_) {
        // It may be in the ledger: whoever tries again must know of it.
        if (!line_.picture.path.empty()) {
            folder_.unfinished.insert_or_assign(key, line_);
        }
        return not_placed(error);
    }
    folder_.unfinished.erase(key);
    folder_.last_number = std::max(folder_.last_number, line_.number);
    folder_.pairs.remember(line_);
    error = sync();
    if (error != 0) {
        return not_placed(error);
    }
    // Without this line the next start finds the file in its place, and tells of it.
    folder_.ledger.append(PlacedAs{line_.picture.id});
    if (const auto id = read_id(line_.picture.id)) {
        folder_.untold.insert(*id);
    }
    Picture placed = line_.picture;
    placed.path = folder_.path + "/" + placed.path;
    return placed;
}

}  // namespace

void clear_reservation(const Folder& folder, const Placing& cut) {
    if (!cut.reserves) {
        return;
    }
    int error = 0;
    struct stat facts {};
    const Spot spot = spot_of(cut.picture.path);
    const Descriptor target = open_below(folder.itself.number(), spot.folder, false, error);
    const std::string name = cut.picture.path.substr(cut.picture.path.rfind('/') + 1);
    if (error == 0 && ::fstatat(target.number(), name.c_str(), &facts, AT_SYMLINK_NOFOLLOW) == 0 &&
        S_ISREG(facts.st_mode) && facts.st_size == 0 && facts.st_nlink == 1 &&
        facts.st_uid == ::geteuid() && facts_of(facts).changed >= cut.written - coarse_time) {
        ::unlinkat(target.number(), name.c_str(), 0);
    }
}

Spot spot_of(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    const bool below = slash != std::string_view::npos;
    return {std::string(below ? path.substr(0, slash) : ""),
            std::string(stem_of(below ? path.substr(slash + 1) : path))};
}

Descriptor open_below(int folder, std::string_view path, bool make, int& error) {
    Descriptor here = open_folder(folder, ".", error);
    while (error == 0 && !path.empty()) {
        const std::string part(path.substr(0, path.find('/')));
        path.remove_prefix(std::min(path.size(), part.size() + 1));
        if (make && ::mkdirat(here.number(), part.c_str(), 0777) == 0) {
            // A file that is safe in a folder that is not would be lost with it.
            error = sync_file(here.number());
        } else if (make && errno != EEXIST) {
            error = errno;
        }
        if (error != 0) {
            return {};
        }
        Descriptor next = open_folder(here.number(), part.c_str(), error);
        here = std::move(next);
    }
    return here;
}

std::variant<Picture, Problem> place(Folder& folder, const ToPlace& file, TimeOfDay now) {
    return Placer(folder, file).place(now);
}

}  // namespace host::pictures
