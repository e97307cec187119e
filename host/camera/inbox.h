// Everything that other threads have for the camera's own thread, in the order in which it came.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "host/brain/news.h"
#include "host/camera.h"
#include "host/process/mutex.h"
#include "host/process/pipe.h"
#include "host/values/file_work.h"

namespace host {

struct Asked {
    Request request;
    std::function<void(const Answer&)> answered;
};

struct ListAsked {
    std::string after;
    std::size_t limit = 0;
    std::function<void(const PicturesAnswer&)> answered;
};

struct Listed {
    std::uint64_t number = 0;
    std::optional<std::vector<Picture>> pictures;  // nothing: no folder is open
};

// The worker's process has been reaped.
struct ChildEnded {
    std::string run;
    int status = 0;  // a signal n counts as 128 + n
};

// The camera is being destroyed.
struct Leave {};

using Message =
    std::variant<Asked, ListAsked, Told, FileAnswer, Listed, brain::News, ChildEnded, Leave>;

// Made by the camera; lives as long as any thread that posts.
class Inbox {
  public:
    // Throws std::system_error when the process has no descriptors left.
    Inbox();

    // From any thread; never waits.
    void post(Message message) HOST_EXCLUDES(mutex_);

    // The camera's thread only: everything that has been posted.
    std::vector<Message> take() HOST_EXCLUDES(mutex_);

    // Readable when something has been posted.
    int descriptor() const {
        return wake_up_.read_end.number();
    }

  private:
    const Pipe wake_up_;
    Mutex mutex_;
    std::vector<Message> messages_ HOST_GUARDED_BY(mutex_);
};

}  // namespace host
