// Files that are whole or not there.

#include "simulator/camera/pictures/file.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

PictureFile::PictureFile(const char* path)
    : path_(path),
      descriptor_(open(path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666)) {
    if (descriptor_ < 0) {
        error_ = errno;
    }
}

PictureFile::~PictureFile() {
    if (descriptor_ >= 0) {
        error_ = ECANCELED;
        close_file();
    }
}

bool PictureFile::write(const void* bytes, std::size_t count) {
    const auto* next = static_cast<const char*>(bytes);
    while (error_ == 0 && count > 0) {
        const ssize_t written = ::write(descriptor_, next, count);
        if (written >= 0) {
            next += written;
            count -= static_cast<std::size_t>(written);
        } else if (errno != EINTR) {
            error_ = errno;
        }
    }
    return error_ == 0;
}

off_t PictureFile::seek(off_t offset, int whence) {
    const off_t place = lseek(descriptor_, offset, whence);
    if (place < 0 && error_ == 0) {
        error_ = errno;
    }
    return place;
}

int PictureFile::error() const {
    return error_;
}

int PictureFile::finish() {
    if (descriptor_ >= 0) {
        close_file();
    }
    return error_;
}

void PictureFile::close_file() {
    if (close(descriptor_) != 0 && error_ == 0 && errno != EINTR) {
        error_ = errno;
    }
    descriptor_ = -1;
    if (error_ != 0) {
        unlink(path_);
    }
}
