// How many descriptors this process has open, and how it does without.
#pragma once

#include <algorithm>
#include <fcntl.h>
#include <set>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

inline std::set<int> open_numbers() {
    // A new one gets the lowest free number: no test here comes near this many.
    const int most = static_cast<int>(std::min(sysconf(_SC_OPEN_MAX), 4096L));
    std::set<int> open;
    for (int number = 0; number < most; ++number) {
        if (fcntl(number, F_GETFD) != -1) {
            open.insert(number);
        }
    }
    return open;
}

inline int open_descriptors() {
    return static_cast<int>(open_numbers().size());
}

// Their inodes: how many there are would not tell new ones from those that are being closed.
inline std::set<ino_t> open_pipes() {
    std::set<ino_t> open;
    for (int number = 0; number < 4096; ++number) {
        struct stat found {};
        if (fstat(number, &found) == 0 && S_ISFIFO(found.st_mode)) {
            open.insert(found.st_ino);
        }
    }
    return open;
}

// While it lives, no descriptor is opened whose number is as large, and no more are waited for.
class DescriptorLimit {
  public:
    explicit DescriptorLimit(rlim_t most) {
        getrlimit(RLIMIT_NOFILE, &before_);
        rlimit few = before_;
        few.rlim_cur = std::min<rlim_t>(few.rlim_cur, most);
        setrlimit(RLIMIT_NOFILE, &few);
    }
    ~DescriptorLimit() {
        setrlimit(RLIMIT_NOFILE, &before_);
    }
    DescriptorLimit(const DescriptorLimit&) = delete;
    DescriptorLimit& operator=(const DescriptorLimit&) = delete;

  private:
    rlimit before_{};
};

// While it lives, so many more can be opened.
class DescriptorsLeft {
  public:
    explicit DescriptorsLeft(int left) {
        for (int taken; (taken = open("/dev/null", O_RDONLY | O_CLOEXEC)) >= 0;) {
            taken_.push_back(taken);
        }
        for (; left > 0; --left) {
            give_one_back();
        }
    }
    ~DescriptorsLeft() {
        while (!taken_.empty()) {
            give_one_back();
        }
    }
    DescriptorsLeft(const DescriptorsLeft&) = delete;
    DescriptorsLeft& operator=(const DescriptorsLeft&) = delete;

  private:
    void give_one_back() {
        close(taken_.back());
        taken_.pop_back();
    }

    const DescriptorLimit limit_{128};
    std::vector<int> taken_;
};

// While it lives, those of the standard streams are closed whose bits are set. Nothing may be
// printed.
class StandardStreamsClosed {
  public:
    explicit StandardStreamsClosed(unsigned which) {
        for (int number = 0; number < 3; ++number) {
            kept_[number] = fcntl(number, F_DUPFD_CLOEXEC, 10);
        }
        for (int number = 0; number < 3; ++number) {
            if ((which >> number & 1u) != 0) {
                close(number);
            }
        }
    }
    ~StandardStreamsClosed() {
        for (int number = 0; number < 3; ++number) {
            dup2(kept_[number], number);
            close(kept_[number]);
        }
    }
    StandardStreamsClosed(const StandardStreamsClosed&) = delete;
    StandardStreamsClosed& operator=(const StandardStreamsClosed&) = delete;

  private:
    int kept_[3];
};
