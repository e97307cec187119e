#include "simulator/camera/landing/left_behind.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <iterator>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace camera_sim {
namespace {

constexpr const char* file_endings[] = {".JPG", ".ARW", ".HIF"};
constexpr std::size_t least_digits = 5;

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
    const auto same_letter = [](char one, char other) {
        return std::tolower(static_cast<unsigned char>(one)) ==
               std::tolower(static_cast<unsigned char>(other));
    };
    if (name.size() < prefix.size() ||
        !std::equal(prefix.begin(), prefix.end(), name.begin(), same_letter)) {
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

}  // namespace

bool same_file(int file, const std::string& path) {
    struct stat open_one {};
    struct stat named {};
    return fstat(file, &open_one) == 0 && lstat(path.c_str(), &named) == 0 &&
           open_one.st_dev == named.st_dev && open_one.st_ino == named.st_ino;
}

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

bool part_lies_there(const std::string& folder, const std::string& stem) {
    struct stat facts {};
    return std::any_of(std::begin(file_endings), std::end(file_endings), [&](const char* ending) {
        const std::string part = folder + "/." + stem + ending + std::string(part_ending);
        return lstat(part.c_str(), &facts) == 0;
    });
}

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

}  // namespace camera_sim
