#include "host/pictures/store.h"

#include <algorithm>
#include <type_traits>
#include <utility>

#include "host/pictures/folder.h"

namespace host::pictures {

Store::Store(Options options) : options_(std::move(options)) {}

Store::~Store() = default;

std::optional<FileAnswer> Store::work(const FileWork& work) {
    std::optional<FileAnswer> answer = std::visit(
        [&](const auto& one) -> std::optional<FileAnswer> {
            using Work = std::decay_t<decltype(one)>;
            if constexpr (std::is_same_v<Work, OpenFolder>) {
                return open_folder(one);
            } else if constexpr (std::is_same_v<Work, OpenRun>) {
                return open_run(one);
            } else if constexpr (std::is_same_v<Work, SweepRun>) {
                return sweep_run(one);
            } else if constexpr (std::is_same_v<Work, Examine>) {
                return examine(one);
            } else if constexpr (std::is_same_v<Work, Place>) {
                return place_examined(one);
            } else if constexpr (std::is_same_v<Work, LookAtFolder>) {
                return look(one);
            } else if constexpr (std::is_same_v<Work, CloseFolder>) {
                close_folder(one.folder);
            } else if constexpr (std::is_same_v<Work, RunBegun>) {
                begin_run(one);
            } else {
                tell(one.id);
            }
            return std::nullopt;
        },
        work);
    folders_.erase(std::remove_if(folders_.begin(), folders_.end(),
                                  [](const std::shared_ptr<Folder>& folder) {
                                      return !folder->open && folder.use_count() == 1;
                                  }),
                   folders_.end());
    return answer;
}

void Store::tell(const std::string& id) {
    const auto number = read_id(id);
    for (const std::shared_ptr<Folder>& folder : folders_) {
        if (number && folder->untold.erase(*number) > 0) {
            // If the disk does not take it, the picture is told once more after the next start.
            folder->ledger.append(ToldOf{id});
        }
    }
}

TimeOfDay Store::now() const {
    if (options_.time_of_day) {
        return options_.time_of_day();
    }
    return std::chrono::duration_cast<TimeOfDay>(
        std::chrono::system_clock::now().time_since_epoch());
}

bool Store::is_open(const std::string& folder) const {
    return folder.empty() ? !folders_.empty() : folder_at(folder) != nullptr;
}

std::vector<Picture> Store::list(const std::string& folder, const std::string& after,
                                 std::size_t limit) {
    const std::shared_ptr<Folder> from = !folder.empty()    ? folder_at(folder)
                                         : folders_.empty() ? nullptr
                                                            : folders_.back();
    if (from == nullptr) {
        return {};
    }
    std::vector<Picture> pictures = from->pages.behind(after, from->ledger, limit);
    for (Picture& picture : pictures) {
        picture.path = from->path + "/" + picture.path;
    }
    return pictures;
}

}  // namespace host::pictures
