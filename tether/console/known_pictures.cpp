#include "tether/console/known_pictures.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

namespace console {

using host::MutexLock;

namespace {

// Those that were forgotten are found in the ledger.
constexpr std::size_t most_pictures = 50'000;

int value_of(char digit) {
    return digit >= '0' && digit <= '9'   ? digit - '0'
           : digit >= 'A' && digit <= 'F' ? digit - 'A' + 10
                                          : -1;
}

// A name that is not UTF-8 is told with percent signs.
std::string without_percent_signs(const std::string& text) {
    std::string bytes;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const bool is_escaped = text[at] == '%' && at + 2 < text.size() &&
                                value_of(text[at + 1]) >= 0 && value_of(text[at + 2]) >= 0;
        bytes += is_escaped
                     ? static_cast<char>(value_of(text[at + 1]) * 16 + value_of(text[at + 2]))
                     : text[at];
        at += is_escaped ? 2 : 0;
    }
    return bytes;
}

// Neither a link nor a pipe that somebody has put in its place is followed, or waited for.
host::Descriptor opened(const std::string& path) {
    return host::Descriptor(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
}

}  // namespace

void KnownPictures::add(const rpc::Json& picture) {
    const MutexLock lock(mutex_);
    if (pictures_.size() >= most_pictures) {
        pictures_.clear();
    }
    pictures_[picture.at("id").get<std::string>()] = {picture.at("path").get<std::string>(),
                                                      picture.at("format").get<std::string>()};
}

std::optional<KnownPicture> KnownPictures::find(const std::string& id) {
    const MutexLock lock(mutex_);
    const auto found = pictures_.find(id);
    return found == pictures_.end() ? std::nullopt : std::optional(found->second);
}

std::optional<OpenFile> open_picture(const KnownPicture& picture) {
    OpenFile file{opened(picture.path)};
    if (!file.descriptor.is_open() && errno == ENOENT) {
        file.descriptor = opened(without_percent_signs(picture.path));
    }
    struct stat found {};
    if (!file.descriptor.is_open() || fstat(file.descriptor.number(), &found) != 0 ||
        !S_ISREG(found.st_mode)) {
        return std::nullopt;
    }
    file.bytes = static_cast<std::size_t>(found.st_size);
    return file;
}

}  // namespace console
