// The virtual camera's journal, heard while it is written: every call of the SDK, as a notification
// on the clock of the lines. With a real camera nothing is heard.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <thread>

#include "host/process/pipe.h"
#include "host/values/time.h"
#include "tether/serve/wake_up.h"

namespace console {

// One line of the journal as the parameters of `call`; empty when it is none. `begun` and `now` are
// moments of the host's clock, `steady` is now on the camera's.
std::string call_of(std::string_view line, host::Time begun, host::Time now, host::Time steady);

class Journal {
  public:
    // `told` is called on a thread of this object with each notification.
    Journal(host::Time begun, std::function<void(std::string)> told);
    ~Journal();
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;

    // For the camera to write to. Empty when no pipe could be made.
    const std::string& path() const {
        return path_;
    }

  private:
    void work();

    const host::Time begun_;
    const std::function<void(std::string)> told_;
    serve::WakeUp ending_;
    std::string folder_;
    std::string path_;
    host::Descriptor pipe_;
    std::thread thread_;
};

}  // namespace console
