#include "host/pictures/recovery.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <map>
#include <type_traits>
#include <unistd.h>
#include <unordered_map>
#include <utility>

#include "host/pictures/disk/regular_file.h"
#include "host/pictures/naming/stems.h"
#include "host/pictures/placing.h"

namespace host::pictures {
namespace {

struct Cut {
    std::optional<FileFacts> staged;
    std::optional<FileFacts> placed;
};

std::optional<FileFacts> regular_at(const Descriptor& folder, const std::string& name) {
    struct stat facts {};
    if (!folder.is_open() ||
        ::fstatat(folder.number(), name.c_str(), &facts, AT_SYMLINK_NOFOLLOW) != 0 ||
        !S_ISREG(facts.st_mode)) {
        return std::nullopt;
    }
    return facts_of(facts);
}

bool is_it(const std::optional<FileFacts>& found, const FileFacts& file) {
    return found && is_same_file(*found, file);
}

class Recovery {
  public:
    Recovery(Folder& folder, TimeOfDay now) : folder_(folder), now_(now) {}

    int recover(Found& found);

  private:
    void remember(const LedgerEntry& entry);
    void finish(const Placing& cut);
    void place_again(const Placing& cut, const Descriptor& staging, const FileFacts& file);
    void tell(Picture picture);
    void add(Picture picture);

    Folder& folder_;
    const TimeOfDay now_;
    std::map<std::string, Placing> cut_;                    // by the picture's id
    std::map<std::uint64_t, Picture> untold_;               // in the order of the ledger
    std::unordered_map<std::string, std::uint64_t> order_;  // in untold_, of an id
    std::uint64_t placed_ = 0;
    Found found_;
};

void Recovery::remember(const LedgerEntry& entry) {
    std::visit(
        [&](const auto& one) {
            using Entry = std::decay_t<decltype(one)>;
            if constexpr (std::is_same_v<Entry, Placing>) {
                folder_.last_shot = std::max(folder_.last_shot, one.picture.shot.value_or(0));
                folder_.last_number = std::max(folder_.last_number, one.number);
                cut_.insert_or_assign(one.picture.id, one);
            } else if constexpr (std::is_same_v<Entry, PlacedAs>) {
                if (const auto placed = cut_.extract(one.id)) {
                    folder_.pairs.remember(placed.mapped());
                    order_[one.id] = ++placed_;
                    untold_.emplace(placed_, std::move(placed.mapped().picture));
                }
            } else if constexpr (std::is_same_v<Entry, ToldOf>) {
                if (const auto told = order_.extract(one.id)) {
                    untold_.erase(told.mapped());
                }
            } else if constexpr (std::is_same_v<Entry, Dropped>) {
                cut_.erase(one.id);
            } else {
                folder_.left_there.insert(one.run + "/" + one.name);
            }
        },
        entry);
}

// Unless somebody has taken it away before it was ever told.
void Recovery::tell(Picture picture) {
    int error = 0;
    struct stat facts {};
    const Descriptor target =
        open_below(folder_.itself.number(), spot_of(picture.path).folder, false, error);
    const std::string name = picture.path.substr(picture.path.rfind('/') + 1);
    if (error == ENOENT ||
        (error == 0 && ::fstatat(target.number(), name.c_str(), &facts, AT_SYMLINK_NOFOLLOW) != 0 &&
         errno == ENOENT)) {
        folder_.ledger.append(ToldOf{picture.id});
        found_.problems.push_back({Code::picture_not_there,
                                   "A picture was taken away before anybody was told of it: " +
                                       folder_.path + "/" + picture.path,
                                   {},
                                   picture.shot});
        return;
    }
    add(std::move(picture));
}

void Recovery::add(Picture picture) {
    if (const auto id = read_id(picture.id)) {
        folder_.untold.insert(*id);
    }
    picture.path = folder_.path + "/" + picture.path;
    found_.pictures.push_back(std::move(picture));
}

void Recovery::place_again(const Placing& cut, const Descriptor& staging, const FileFacts& file) {
    // It keeps its id, also where its number is new.
    folder_.unfinished.insert_or_assign(cut.run + "/" + cut.from, cut);
    ToPlace again;
    again.staging = staging.number();
    again.run = cut.run;
    again.name = cut.from;
    again.file = file;
    again.picture = cut.picture;
    again.spot = spot_of(cut.picture.path);
    const auto outcome = place(folder_, again, now_);
    if (const auto* const picture = std::get_if<Picture>(&outcome)) {
        found_.pictures.push_back(*picture);
    } else {
        found_.problems.push_back(std::get<Problem>(outcome));
    }
}

void Recovery::finish(const Placing& cut) {
    int error = 0;
    const Spot spot = spot_of(cut.picture.path);
    const Descriptor staging = open_folder(folder_.incoming.number(), cut.run.c_str(), error);
    const Descriptor target = open_below(folder_.itself.number(), spot.folder, false, error);
    const std::string name = cut.picture.path.substr(cut.picture.path.rfind('/') + 1);
    const auto staged = regular_at(staging, cut.from);
    const auto placed = regular_at(target, name);
    const bool same_number = placed && placed->identity.inode == cut.file.identity.inode;
    if (is_it(staged, cut.file)) {
        return place_again(cut, staging, *staged);
    }
    if (is_it(placed, cut.file) || (!staged && same_number)) {
        folder_.ledger.append(PlacedAs{cut.picture.id});
        folder_.pairs.remember(cut);
        return add(cut.picture);
    }
    clear_reservation(folder_, cut);
    folder_.ledger.append(Dropped{cut.picture.id});
    if (!staged) {
        found_.problems.push_back({Code::picture_not_there,
                                   "A picture was being brought to " + folder_.path + "/" +
                                       cut.picture.path +
                                       " when the program ended, and is not there.",
                                   {},
                                   cut.picture.shot});
    }
}

int Recovery::recover(Found& found) {
    const int error = folder_.ledger.read([&](const LedgerEntry& entry) {
        remember(entry);
        return true;
    });
    if (error != 0) {
        return error;
    }
    for (auto& [order, picture] : untold_) {
        tell(std::move(picture));
    }
    std::vector<const Placing*> oldest_first;
    oldest_first.reserve(cut_.size());
    for (const auto& [id, cut] : cut_) {
        oldest_first.push_back(&cut);
    }
    std::stable_sort(
        oldest_first.begin(), oldest_first.end(),
        [](const auto* one, const auto* other) { return one->picture.at < other->picture.at; });
    for (const Placing* cut : oldest_first) {
        finish(*cut);
    }
    found = std::move(found_);
    return 0;
}

}  // namespace

int recover(Folder& folder, TimeOfDay now, Found& found) {
    return Recovery(folder, now).recover(found);
}

}  // namespace host::pictures
