#include "simulator/camera/landing/landing.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <iterator>
#include <set>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include "simulator/camera/landing/left_behind.h"
#include "simulator/camera/landing/rename.h"

namespace camera_sim {

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
        if (numbers.count(number) == 0 && !part_lies_there(folder_, stem(number))) {
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
