#include "host/pictures/sweeping.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

#include "host/pictures/disk/listing.h"
#include "host/pictures/disk/regular_file.h"
#include "host/pictures/naming/stems.h"
#include "host/pictures/placing.h"
#include "host/pictures/whole/whole.h"

namespace host::pictures {
namespace {

// More than these are told by the next sweep.
constexpr std::size_t most_problems = 100;

struct Staged {
    std::string name;
    FileFacts file;
};

class Sweep {
  public:
    Sweep(Run& run, bool over, TimeOfDay now)
        : run_(run), folder_(*run.folder), over_(over), now_(now) {}

    Found sweep(const std::function<bool(const std::string&)>& spared);

  private:
    std::vector<Staged> oldest_first(const std::function<bool(const std::string&)>& spared);
    void leave(const std::string& name, const char* what);
    void bring_in(const Staged& staged);
    ToPlace to_place(const Staged& staged);

    Run& run_;
    Folder& folder_;
    const bool over_;
    const TimeOfDay now_;
    Found found_;
};

void Sweep::leave(const std::string& name, const char* what) {
    const std::string key = run_.name + "/" + name;
    if (found_.problems.size() >= most_problems || folder_.left_there.count(key) > 0) {
        return;
    }
    folder_.left_there.insert(key);
    folder_.ledger.append(LeftThere{run_.name, name});
    found_.problems.push_back(
        {Code::picture_not_placed,
         std::string("Not a picture but ") + what + " was left where it is: " +
             path_now(run_.staging.number(), run_.staging_path()) + "/" + name,
         {},
         {}});
}

std::vector<Staged> Sweep::oldest_first(const std::function<bool(const std::string&)>& spared) {
    std::vector<Staged> files;
    const int error = list_folder(run_.staging.number(), [&](const char* name) {
        struct stat facts {};
        if (::fstatat(run_.staging.number(), name, &facts, AT_SYMLINK_NOFOLLOW) != 0) {
            return true;
        }
        if (S_ISLNK(facts.st_mode)) {
            leave(name, "a link");
        } else if (S_ISDIR(facts.st_mode)) {
            leave(name, "a folder");
        } else if (!S_ISREG(facts.st_mode)) {
            leave(name, "something else");
        } else if (name[0] == '.') {
            leave(name, "a hidden file");
        } else if (!spared(name)) {
            files.push_back({name, facts_of(facts)});
        }
        return true;
    });
    // ENOENT: the folder has been deleted, and everything in it.
    if (error != 0 && error != ENOENT) {
        found_.problems.push_back({Code::picture_not_placed,
                                   "What has been staged cannot be looked at: " + in_words(error) +
                                       ". It is now in " +
                                       path_now(run_.staging.number(), run_.staging_path()),
                                   {},
                                   {}});
    }
    std::sort(files.begin(), files.end(), [](const Staged& one, const Staged& other) {
        return std::tie(one.file.changed, one.name) < std::tie(other.file.changed, other.name);
    });
    return files;
}

ToPlace Sweep::to_place(const Staged& staged) {
    ToPlace file;
    file.staging = run_.staging.number();
    file.run = run_.name;
    file.name = staged.name;
    file.file = staged.file;
    Picture& picture = file.picture;
    picture.camera_name = staged.name;
    picture.format = format_of(staged.name);
    picture.kind = kind_of(picture.format);
    picture.recovered = true;
    // Its shot was known when moving it failed, or is that of its other half.
    const auto cut = folder_.unfinished.find(run_.name + "/" + staged.name);
    if (cut != folder_.unfinished.end() && is_same_file(cut->second.file, staged.file)) {
        picture = cut->second.picture;
        file.spot = spot_of(picture.path);
    } else if (const Pair* other =
                   folder_.pairs.lacking(picture.kind, run_.name, stem_of(staged.name))) {
        picture.pair = other->name;
        picture.shot = other->shot;
        picture.tag = other->tag;
    }
    return file;
}

void Sweep::bring_in(const Staged& staged) {
    ToPlace file = to_place(staged);
    int error = 0;
    const Descriptor opened =
        open_regular(run_.staging.number(), staged.name.c_str(), O_RDONLY, error);
    file.picture.whole =
        error == 0 && why_not_whole(opened.number(), staged.file.bytes, staged.name).empty();
    if (!over_ && !file.picture.whole) {
        return;
    }
    auto outcome = place(folder_, file, now_);
    if (auto* const picture = std::get_if<Picture>(&outcome)) {
        run_.remember_placed(staged.name);
        found_.pictures.push_back(std::move(*picture));
    } else {
        found_.problems.push_back(std::get<Problem>(std::move(outcome)));
    }
}

Found Sweep::sweep(const std::function<bool(const std::string&)>& spared) {
    for (const Staged& staged : oldest_first(spared)) {
        bring_in(staged);
    }
    return std::move(found_);
}

}  // namespace

Found sweep(Run& run, bool over, const std::function<bool(const std::string&)>& spared,
            TimeOfDay now) {
    return Sweep(run, over, now).sweep(spared);
}

bool remove_staging(const Run& run) {
    const int incoming = run.folder->incoming.number();
    struct stat facts {};
    if (::fstatat(incoming, run.name.c_str(), &facts, AT_SYMLINK_NOFOLLOW) != 0) {
        return true;
    }
    return identity_of(facts) == run.identity &&
           ::unlinkat(incoming, run.name.c_str(), AT_REMOVEDIR) == 0;
}

std::vector<Problem> about_damaged(const std::vector<Picture>& pictures) {
    std::vector<Problem> problems;
    for (const Picture& picture : pictures) {
        if (!picture.whole) {
            problems.push_back(
                {Code::picture_damaged, "A picture is damaged: " + picture.path, {}, picture.shot});
        }
    }
    return problems;
}

}  // namespace host::pictures
