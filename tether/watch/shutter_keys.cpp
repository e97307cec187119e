#include "tether/watch/shutter_keys.h"

#include <cerrno>
#include <chrono>
#include <signal.h>
#include <thread>
#include <unistd.h>

#include "tether/live/happenings.h"

namespace tether {
namespace {

constexpr char control_d = 4;
constexpr std::chrono::seconds look_again{1};

bool in_foreground() {
    return tcgetpgrp(STDIN_FILENO) == getpgrp();
}

// In the background a read fails instead of stopping the process: SIGTTIN is blocked here.
void read_keys() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTTIN);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    for (;;) {
        char key = 0;
        const ssize_t count = read(STDIN_FILENO, &key, 1);
        if (count == 0) {
            return;
        }
        if (count < 0 && errno == EIO) {
            std::this_thread::sleep_for(look_again);
        } else if (count < 0 && errno != EINTR) {
            return;
        } else if (count > 0 && (key == ' ' || key == '\n' || key == '\r')) {
            happenings().post(Happening(ShutterKey{}));
        } else if (count > 0 && key == control_d) {
            happenings().post(Happening(Interrupted{}));
        }
    }
}

}  // namespace

ShutterKeys::ShutterKeys() {
    if (isatty(STDIN_FILENO) != 1 || !in_foreground() || tcgetattr(STDIN_FILENO, &before_) != 0) {
        return;
    }
    listening_ = true;
    resume();
    std::thread(read_keys).detach();
}

void ShutterKeys::suspend() const {
    if (listening_ && in_foreground()) {
        tcsetattr(STDIN_FILENO, TCSADRAIN, &before_);
    }
}

// Ctrl-C goes on to raise its signal.
void ShutterKeys::resume() const {
    if (!listening_ || !in_foreground()) {
        return;
    }
    termios keys = before_;
    keys.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    keys.c_cc[VMIN] = 1;
    keys.c_cc[VTIME] = 0;
    tcsetattr(STDIN_FILENO, TCSADRAIN, &keys);
}

}  // namespace tether
