// Where the pictures lie that somebody has been told of, by their ids.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <unordered_map>

#include "host/process/mutex.h"
#include "host/process/pipe.h"
#include "tether/rpc/json.h"

namespace console {

struct KnownPicture {
    std::string path;
    std::string format;  // as it is told
};

// Every operation may be called from any thread.
class KnownPictures {
  public:
    // As it stands on the wire.
    void add(const rpc::Json& picture);
    std::optional<KnownPicture> find(const std::string& id);

  private:
    host::Mutex mutex_;
    std::unordered_map<std::string, KnownPicture> pictures_ HOST_GUARDED_BY(mutex_);
};

// A file that is open, and how large it was then.
struct OpenFile {
    host::Descriptor descriptor;
    std::size_t bytes = 0;
};

// Nothing when it is not there any more, or is no file.
std::optional<OpenFile> open_picture(const KnownPicture& picture);

}  // namespace console
