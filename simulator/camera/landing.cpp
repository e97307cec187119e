#include "simulator/camera/landing.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <set>
#include <string_view>
#include <strings.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include "simulator/camera/pictures/file.h"

namespace camera_sim {
namespace {

constexpr std::string_view lock_ending = ".camera-sim.lock";
constexpr std::string_view part_ending = ".camera-sim.part";
constexpr const char* file_endings[] = {".JPG", ".ARW", ".HIF"};
constexpr std::size_t least_digits = 5;

bool same_file(int file, const std::string& path) {
    struct stat open_one {};
    struct stat named {};
    return fstat(file, &open_one) == 0 && lstat(path.c_str(), &named) == 0 &&
           open_one.st_dev == named.st_dev && open_one.st_ino == named.st_ino;
}

bool is_regular(const std::string& path) {
    struct stat facts {};
    return lstat(path.c_str(), &facts) == 0 && S_ISREG(facts.st_mode);
}

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

bool ends_with(std::string_view text, std::string_view ending) {
    return text.size() >= ending.size() && text.substr(text.size() - ending.size()) == ending;
}

// The number in a file's name, whatever its ending; 0 when it is no shot of this prefix.
unsigned number_in(std::string_view name, const std::string& prefix) {
    if (name.size() < prefix.size() ||
        strncasecmp(name.data(), prefix.c_str(), prefix.size()) != 0) {
        return 0;
    }
    name.remove_prefix(prefix.size());
    const auto point = static_cast<std::size_t>(
        std::find_if_not(name.begin(), name.end(), is_digit) - name.begin());
    if (point < least_digits || point > 9 || (point < name.size() && name[point] != '.')) {
        return 0;
    }
    unsigned number = 0;
    for (const char digit : name.substr(0, point)) {
        number = number * 10 + static_cast<unsigned>(digit - '0');
    }
    return number;
}

// Whether the name is the lock of a shot, and its stem then.
bool is_lock(std::string_view name, std::string& stem) {
    if (name.size() <= lock_ending.size() || name[0] != '.' || !ends_with(name, lock_ending)) {
        return false;
    }
    name.remove_prefix(1);
    name.remove_suffix(lock_ending.size());
    const auto digits = static_cast<std::size_t>(
        std::find_if_not(name.rbegin(), name.rend(), is_digit) - name.rbegin());
    stem = name;
    return digits >= least_digits;
}

// Removes what a camera has left that lives no more: while one lives it holds the lock. True: the
// number is free again.
bool clear_left_behind(const std::string& folder, const std::string& stem) {
    const std::string hidden = folder + "/." + stem;
    const std::string path = hidden + std::string(lock_ending);
    // Not blocked by a pipe of that name, which is not ours.
    const int lock = open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (lock < 0) {
        return false;
    }
    struct stat facts {};
    const bool dead = fstat(lock, &facts) == 0 && S_ISREG(facts.st_mode) && facts.st_size == 0 &&
                      flock(lock, LOCK_EX | LOCK_NB) == 0 && same_file(lock, path);
    if (dead) {
        for (const char* ending : file_endings) {
            const std::string part = hidden + ending + std::string(part_ending);
            if (is_regular(part)) {
                unlink(part.c_str());
            }
        }
        unlink(path.c_str());
    }
    close(lock);
    return dead;
}

// The numbers of this prefix that lie in the folder. Clears what dead cameras have left there, but
// for the shot `own`.
int read_folder(const std::string& folder, const std::string& prefix, const std::string& own,
                std::set<unsigned>& numbers) {
    DIR* const entries = opendir(folder.c_str());
    if (entries == nullptr) {
        return errno;
    }
    std::vector<std::string> locks;
    std::string stem;
    while (const dirent* entry = readdir(entries)) {
        if (const unsigned number = number_in(entry->d_name, prefix)) {
            numbers.insert(number);
        } else if (is_lock(entry->d_name, stem) && stem != own) {
            locks.push_back(stem);
        }
    }
    closedir(entries);
    for (const std::string& left : locks) {
        clear_left_behind(folder, left);
    }
    return 0;
}

bool has_no_such_call(int error) {
    return error == EINVAL || error == ENOSYS || error == ENOTSUP || error == EOPNOTSUPP;
}

// For a file system that knows neither a rename that replaces nothing nor a second name.
int copy_into_new_file(const std::string& from, const std::string& to) {
    const int source = open(from.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
    if (source < 0) {
        return errno;
    }
    PictureFile copy(to.c_str());
    int error = copy.error();
    std::vector<char> buffer(std::size_t{1} << 16);
    while (error == 0) {
        const ssize_t got = read(source, buffer.data(), buffer.size());
        if (got == 0) {
            break;
        }
        if (got < 0) {
            error = errno == EINTR ? 0 : errno;
        } else if (!copy.write(buffer.data(), static_cast<std::size_t>(got))) {
            error = copy.error();
        }
    }
    close(source);
    return error != 0 ? error : copy.finish();
}

// Gives the file another name; EEXIST when there is one of that name, even a link to nowhere.
int rename_without_replacing(const std::string& from, const std::string& to) {
#if defined(__APPLE__)
    const int renamed = renamex_np(from.c_str(), to.c_str(), RENAME_EXCL);
#elif defined(RENAME_NOREPLACE)
    const int renamed = renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE);
#else
    errno = ENOSYS;
    const int renamed = -1;
#endif
    if (renamed == 0 || !has_no_such_call(errno)) {
        return renamed == 0 ? 0 : errno;
    }
    int error = link(from.c_str(), to.c_str()) == 0 ? 0 : errno;
    if (error == EPERM || error == EMLINK || has_no_such_call(error)) {
        error = copy_into_new_file(from, to);
    }
    if (error == 0) {
        unlink(from.c_str());
    }
    return error;
}

}  // namespace

unsigned number_after(unsigned number) {
    return number == last_number ? 1 : number + 1;
}

Landing::Landing(std::string folder, std::string prefix)
    : folder_(std::move(folder)), prefix_(std::move(prefix)) {}

Landing::~Landing() {
    let_go();
}

int Landing::reserve(unsigned number, bool beyond_all) {
    let_go();
    std::set<unsigned> numbers;
    if (beyond_all) {
        if (const int error = read_folder(folder_, prefix_, "", numbers)) {
            return error;
        }
        // Longer numbers are no camera's.
        const auto end = numbers.upper_bound(last_number);
        if (end != numbers.begin() && *std::prev(end) >= number) {
            number = number_after(*std::prev(end));
        }
    }
    for (unsigned tried = 0; tried <= last_number; ++tried, number = number_after(number)) {
        if (numbers.count(number) != 0) {
            continue;
        }
        const int error = take(number);
        if (error == EEXIST) {
            continue;  // another camera is about to land there
        }
        if (error != 0) {
            return error;
        }
        // Looked at with the number in hand: who had it before may have landed meanwhile.
        numbers.clear();
        if (const int unread = read_folder(folder_, prefix_, stem(number), numbers)) {
            let_go();
            return unread;
        }
        if (numbers.count(number) == 0) {
            return 0;
        }
        let_go();
    }
    return EEXIST;
}

// Makes the lock of a number and holds it.
int Landing::take(unsigned number) {
    const std::string path = hidden(number) + std::string(lock_ending);
    for (;;) {
        const int lock =
            open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644);
        if (lock < 0) {
            const int error = errno;
            if (error == EEXIST && clear_left_behind(folder_, stem(number))) {
                continue;
            }
            return error;
        }
        // A file system without flock goes without clearing up, too. Until it is locked another
        // camera may take the file for one left behind.
        const bool taken_for_dead = flock(lock, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
        if (!taken_for_dead && same_file(lock, path)) {
            lock_ = lock;
            number_ = number;
            return 0;
        }
        close(lock);
    }
}

bool Landing::reserved() const {
    return lock_ >= 0;
}

unsigned Landing::number() const {
    return number_;
}

std::string Landing::stem(unsigned number) const {
    char digits[16];
    std::snprintf(digits, sizeof digits, "%05u", number);
    return prefix_ + digits;
}

std::string Landing::hidden(unsigned number) const {
    return folder_ + "/." + stem(number);
}

std::string Landing::path(unsigned number, const char* ending) const {
    return folder_ + "/" + stem(number) + ending;
}

int Landing::make(const char* ending, const std::function<int(const std::string&)>& making) {
    discard();
    const std::string part = hidden(number_) + ending + std::string(part_ending);
    const int error = making(part);
    if (error == 0) {
        made_ = part;
        ending_ = ending;
    }
    return error;
}

int Landing::halve() {
    const int file = open(made_.c_str(), O_WRONLY | O_NOFOLLOW | O_CLOEXEC);
    if (file < 0) {
        return errno;
    }
    const int error = ftruncate(file, static_cast<off_t>(bytes() / 2)) == 0 ? 0 : errno;
    close(file);
    return error;
}

long long Landing::bytes() const {
    struct stat facts {};
    return lstat(made_.c_str(), &facts) == 0 ? facts.st_size : 0;
}

int Landing::publish() {
    const int error = rename_without_replacing(made_, path(number_, ending_));
    if (error == 0) {
        made_.clear();
    }
    discard();
    return error;
}

void Landing::discard() {
    if (!made_.empty()) {
        unlink(made_.c_str());
        made_.clear();
    }
}

void Landing::let_go() {
    discard();
    if (lock_ >= 0) {
        const std::string path = hidden(number_) + std::string(lock_ending);
        if (same_file(lock_, path)) {
            unlink(path.c_str());
        }
        close(lock_);
        lock_ = -1;
    }
}

}  // namespace camera_sim
