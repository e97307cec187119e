// The terminal's keys while a watch runs: space and enter shoot, without a line having to be ended.
#pragma once

#include <termios.h>

namespace tether {

// Every operation may be called from any thread.
class ShutterKeys {
  public:
    // Posts ShutterKey for space and enter, and Interrupted for Ctrl-D, if standard input is a
    // terminal that this process may read from; nothing otherwise.
    ShutterKeys();
    ShutterKeys(const ShutterKeys&) = delete;
    ShutterKeys& operator=(const ShutterKeys&) = delete;

    bool listening() const {
        return listening_;
    }

    // The terminal as it was before: for the shell, at the end and while the process is stopped.
    void suspend() const;
    void resume() const;

  private:
    bool listening_ = false;
    termios before_{};
};

}  // namespace tether
