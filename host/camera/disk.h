// The disk's thread: does what is asked of the disk, in order. A disk that is stuck holds up this
// thread and nobody else.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "host/camera/inbox.h"
#include "host/process/mutex.h"
#include "host/values/file_work.h"
#include "host/values/picture.h"

namespace host {

struct ListWork {
    std::uint64_t number = 0;
    std::string folder;
    std::string after;
    std::size_t limit = 0;
};

// What does the work. Called on the disk's thread only and destroyed there, except hurry().
struct DiskWork {
    std::function<std::optional<FileAnswer>(const FileWork&)> file_work;
    // Nothing when the folder is not open: what is in it is not known.
    std::function<std::optional<std::vector<Picture>>(const ListWork&)> list;
    std::function<void()> hurry;  // nobody is to be waited for any more
};

class Disk {
  public:
    // Answers go to the inbox.
    Disk(DiskWork work, std::shared_ptr<Inbox> inbox);

    // What has been asked is done first; a disk that is stuck for 2 s is left to itself.
    ~Disk();
    Disk(const Disk&) = delete;
    Disk& operator=(const Disk&) = delete;

    void ask(FileWork work);

    // Answered by Listed.
    void list(ListWork work);

  private:
    using Task = std::variant<FileWork, ListWork>;

    // Shared with the thread, which may outlive this.
    struct Shared {
        Mutex mutex;
        std::condition_variable changed;
        std::deque<Task> tasks HOST_GUARDED_BY(mutex);
        bool ending HOST_GUARDED_BY(mutex) = false;
        bool ended HOST_GUARDED_BY(mutex) = false;
    };

    void post(Task task);
    static void run(Shared& shared, const DiskWork& work, Inbox& inbox);
    static bool next(Shared& shared, Task& task);

    const std::shared_ptr<Shared> shared_ = std::make_shared<Shared>();
    std::function<void()> hurry_;
};

}  // namespace host
