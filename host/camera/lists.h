// Lists of pictures that the disk was asked for: each is answered once, by the disk or, when that
// is stuck, without it. The camera's thread only.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <vector>

#include "host/camera.h"
#include "host/camera/inbox.h"

namespace host {

class Lists {
  public:
    // The number to ask the disk by; nothing when so many wait already that it was answered at
    // once.
    std::optional<std::uint64_t> ask(std::function<void(const PicturesAnswer&)> answered, Time now);

    void answer(const Listed& listed);

    // Answers those that have waited too long.
    void strike(Time now);
    Time wake_at() const;

  private:
    struct Waiting {
        std::function<void(const PicturesAnswer&)> answered;
        Time deadline{};
    };

    std::uint64_t last_ = 0;
    std::size_t at_the_disk_ =
        0;  // asked and not done, also of those that were answered without it
    std::map<std::uint64_t, Waiting> waiting_;
};

}  // namespace host
