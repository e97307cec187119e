#pragma once

#include <cstddef>
#include <sys/types.h>

// A file on its way to the disk. The first error is kept and ends the writing, whatever the library
// that writes makes of it. Unless finish() has returned 0, no file of it stays behind. What lies at
// the path already, a link among it, is left alone: EEXIST.
class PictureFile {
  public:
    explicit PictureFile(const char* path);
    ~PictureFile();
    PictureFile(const PictureFile&) = delete;
    PictureFile& operator=(const PictureFile&) = delete;

    // False once an error has happened, whichever call met it.
    bool write(const void* bytes, std::size_t count);

    // As lseek.
    off_t seek(off_t offset, int whence);

    // The errno value of the first error; 0 while all is well.
    int error() const;

    // Closes the file, which is when some file systems first say that they are full.
    int finish();

  private:
    void close_file();

    const char* path_;
    int descriptor_;
    int error_ = 0;
};
