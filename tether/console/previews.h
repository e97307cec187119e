// Small pictures to look at, made by a program of their own (tether/preview): whatever a damaged
// file does to the libraries that read it, it does it there.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <list>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>

#include "host/process/mutex.h"
#include "tether/console/known_pictures.h"

namespace console {

class Previews {
  public:
    static constexpr std::size_t usual_bytes = std::size_t{64} << 20;

    // `program` makes them; empty: nobody does.
    explicit Previews(std::string program, std::size_t most_bytes = usual_bytes);

    using Made = std::shared_ptr<const std::string>;

    // A JPEG, or null when there can be none; nothing when it could not be made in time. From any
    // thread, which waits until it is made.
    std::optional<Made> of(const std::string& id, const OpenFile& file);

    bool can_be_made() const {
        return !program_.empty();
    }

  private:
    using Kept = std::list<std::pair<std::string, Made>>;

    Made find(const std::string& id) HOST_REQUIRES(mutex_);
    void keep(const std::string& id, const Made& preview) HOST_REQUIRES(mutex_);

    const std::string program_;
    const std::size_t most_bytes_;
    host::Mutex mutex_;
    std::condition_variable made_;
    Kept kept_ HOST_GUARDED_BY(mutex_);  // the one that was wanted last comes first
    std::unordered_map<std::string, Kept::iterator> by_id_ HOST_GUARDED_BY(mutex_);
    std::size_t bytes_ HOST_GUARDED_BY(mutex_) = 0;
    std::set<std::string> being_made_ HOST_GUARDED_BY(mutex_);
};

// Beside this program; empty when it was not built.
std::string preview_program();

}  // namespace console
