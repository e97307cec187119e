#include "host/pictures/folder.h"

#include <array>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include "host/pictures/naming/stems.h"

namespace host::pictures {

bool Folder::is_there() const {
    struct stat facts {};
    return ::stat(path.c_str(), &facts) == 0 && S_ISDIR(facts.st_mode) &&
           identity_of(facts) == identity;
}

bool Folder::has_incoming() const {
    struct stat facts {};
    struct stat here {};
    return ::fstat(incoming.number(), &here) == 0 &&
           ::fstatat(itself.number(), incoming_name, &facts, AT_SYMLINK_NOFOLLOW) == 0 &&
           identity_of(facts) == identity_of(here);
}

std::optional<std::uint64_t> Folder::room() const {
    struct statvfs facts {};
    if (::fstatvfs(itself.number(), &facts) != 0) {
        return std::nullopt;
    }
    return static_cast<std::uint64_t>(facts.f_bavail) * facts.f_frsize;
}

std::string Run::staging_path() const {
    return folder->path + "/" + incoming_name + "/" + name;
}

bool Run::has_staging() const {
    struct stat facts {};
    return ::fstatat(folder->incoming.number(), name.c_str(), &facts, AT_SYMLINK_NOFOLLOW) == 0 &&
           identity_of(facts) == identity;
}

bool Run::was_placed(std::string_view file) const {
    return placed.count(std::hash<std::string>()(fold_case(file))) > 0;
}

void Run::remember_placed(std::string_view file) {
    placed.insert(std::hash<std::string>()(fold_case(file)));
}

Pair* Pairs::named(std::string_view name) {
    for (auto pair = pairs_.rbegin(); pair != pairs_.rend(); ++pair) {
        if (pair->name == name) {
            return &*pair;
        }
    }
    return nullptr;
}

Pair* Pairs::lacking(Kind kind, std::string_view run, std::string_view camera_stem) {
    const std::string folded = fold_case(camera_stem);
    for (auto pair = pairs_.rbegin(); pair != pairs_.rend(); ++pair) {
        if (pair->run == run && pair->camera_stem == folded) {
            const bool lacks = (kind == Kind::raw && !pair->raw && pair->developed) ||
                               (kind == Kind::developed && !pair->developed && pair->raw);
            return lacks ? &*pair : nullptr;
        }
    }
    return nullptr;
}

void Pairs::remember(const Placing& placed) {
    const Picture& picture = placed.picture;
    if (picture.kind == Kind::other) {
        return;
    }
    Pair* pair = named(picture.pair);
    if (pair == nullptr) {
        const std::string_view path = picture.path;
        const std::size_t slash = path.rfind('/');
        const bool below = slash != std::string_view::npos;
        pairs_.push_back({picture.pair, placed.run, fold_case(stem_of(placed.from)),
                          std::string(below ? path.substr(0, slash) : ""),
                          std::string(stem_of(below ? path.substr(slash + 1) : path)), picture.shot,
                          picture.tag, false, false});
        if (pairs_.size() > most) {
            pairs_.pop_front();
        }
        pair = &pairs_.back();
    }
    pair->raw = pair->raw || picture.kind == Kind::raw;
    pair->developed = pair->developed || picture.kind == Kind::developed;
}

std::string lock_of(std::string_view run) {
    return std::string(run) + ".lock";
}

std::string in_words(int error) {
    return std::strerror(error);
}

std::string path_now(int folder, const std::string& otherwise) {
    std::array<char, PATH_MAX + 1> path{};
#if defined(__APPLE__)
    const bool known = ::fcntl(folder, F_GETPATH, path.data()) == 0;
#else
    const std::string link = "/proc/self/fd/" + std::to_string(folder);
    const bool known = ::readlink(link.c_str(), path.data(), path.size() - 1) > 0;
#endif
    return known && path[0] == '/' ? path.data() : otherwise;
}

}  // namespace host::pictures
