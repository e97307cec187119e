#include "tether/serve/serve.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include "tether/live/signals.h"
#include "tether/serve/recorder.h"
#include "tether/serve/server.h"
#include "tether/serve/temporary_folder.h"
#include "tether/serve/wake_up.h"

namespace serve {
namespace {

// For a client that has stopped reading, and for a record on a slow disk.
constexpr std::chrono::seconds to_write_the_rest{5};

// Reads of what a client has asked behind its last shutdown: 4 MiB.
constexpr std::size_t most_at_the_end = 64;

// Whether the user wants to stop.
class Interrupts {
  public:
    // Called while the process has one thread.
    Interrupts(const std::vector<int>& signals, WakeUp& wake_up) {
        tether::act_on_signals(signals, [this, &wake_up](int) {
            came_ = true;
            wake_up.wake();
        });
    }

    bool came() const {
        return came_;
    }

  private:
    std::atomic<bool> came_{false};
};

// Whether there is somebody at the other end who can go away. A file has nobody, and macOS would
// call it ready all the time.
bool has_reader(int output) {
    struct stat found {};
    return fstat(output, &found) == 0 && (S_ISFIFO(found.st_mode) || S_ISSOCK(found.st_mode));
}

// The thread that reads: everything that is asked is asked here.
class Reading {
  public:
    Reading(const Options& options, Server& server, WakeUp& wake_up, const Interrupts& interrupts)
        : input_(options.input),
          output_(options.output),
          server_(server),
          wake_up_(wake_up),
          interrupts_(interrupts),
          watches_output_(has_reader(options.output)) {}

    void until_the_end() {
        while (!server_.has_ended()) {
            take_messages();
            if (interrupts_.came() || server_.client_is_gone()) {
                server_.end();
            } else if (input_over_ && !more_) {
                server_.end_unless_asked();
            }
            wait();
            server_.strike();
        }
        take_what_has_come();
        server_.finish();
    }

  private:
    // What was asked before the client could know of the end is answered too. One that goes on
    // asking, or does not read, is not waited for.
    void take_what_has_come() {
        pollfd readable{input_, POLLIN, 0};
        std::size_t most = most_at_the_end;
        do {
            while (const auto message = messages_.next()) {
                server_.take(*message);
            }
        } while (!input_over_ && most-- > 0 && !server_.is_full() && ::poll(&readable, 1, 0) > 0 &&
                 read());
    }

    void take_messages() {
        more_ = true;
        while (!server_.is_full()) {
            const auto message = messages_.next();
            if (!message) {
                more_ = false;
                return;
            }
            server_.take(*message);
        }
    }

    void wait() {
        const bool reads = !input_over_ && !more_;
        enum { input, wake, output };
        std::array<pollfd, 3> watched{pollfd{reads ? input_ : -1, POLLIN, 0},
                                      pollfd{wake_up_.descriptor(), POLLIN, 0},
                                      // macOS tells only what it is asked for.
                                      pollfd{watches_output_ ? output_ : -1, POLLHUP, 0}};
        if (::poll(watched.data(), watched.size(), host::poll_timeout(server_.next_deadline())) <=
            0) {
            return;
        }
        if (watched[wake].revents != 0) {
            wake_up_.clear();
        }
        // A client that reads no more has gone, even while it has nothing to read.
        if ((watched[output].revents & (POLLERR | POLLHUP)) != 0) {
            watches_output_ = false;
            server_.end();
        }
        if (watched[input].revents != 0) {
            read();
        }
    }

    // False when nothing came.
    bool read() {
        const ssize_t count = ::read(input_, buffer_.data(), buffer_.size());
        if (count > 0) {
            messages_.add({buffer_.data(), static_cast<std::size_t>(count)});
        } else if (count == 0 || (errno != EINTR && errno != EAGAIN)) {
            messages_.finish();
            input_over_ = true;
        }
        return count > 0 || input_over_;
    }

    const int input_;
    const int output_;
    Server& server_;
    WakeUp& wake_up_;
    const Interrupts& interrupts_;
    rpc::Messages messages_;
    std::array<char, 65536> buffer_{};
    bool more_ = false;  // whole messages wait to be taken
    bool input_over_ = false;
    bool watches_output_;
};

void complain(const std::string& sentence) {
    std::fprintf(stderr, "tether: %s\n", sentence.c_str());
}

// On a thread that must not wait for a reader of standard error.
void say_that_the_record_ends(const std::string& why) {
    pollfd room{STDERR_FILENO, POLLOUT, 0};
    if (::poll(&room, 1, 0) == 1 && (room.revents & POLLOUT) != 0) {
        complain("the record ends here: " + why);
    }
}

// Where the virtual camera listens. The user's own scripts may talk to it too; a folder is made
// only when they do not say where.
std::string control_of(const host::CameraOptions& camera,
                       std::unique_ptr<TemporaryFolder>& temporary) {
    const std::string name = "CAMERA_SIM_CONTROL";
    for (const auto& [variable, value] : camera.environment) {
        if (variable == name) {
            return value;
        }
    }
    if (const char* own = std::getenv(name.c_str())) {
        return own;
    }
    temporary = std::make_unique<TemporaryFolder>();
    return temporary->socket();
}

}  // namespace

int carry_out(Options options) {
    tether::Record record(host::TimePoint{}, options.redact);
    if (!options.record.empty() && !record.open(options.record)) {
        complain("cannot write " + options.record + ": " + record.trouble());
        return 2;
    }
    // A client that goes away must not cost the pictures.
    signal(SIGPIPE, SIG_IGN);
    WakeUp& wake_up = *new WakeUp;  // of threads that wait while the process ends
    const Interrupts& interrupts = *new Interrupts(options.signals, wake_up);
    std::unique_ptr<TemporaryFolder> temporary;
    auto recorder = options.record.empty()
                        ? nullptr
                        : std::make_unique<Recorder>(record, say_that_the_record_ends);
    Setup setup;
    setup.camera = std::move(options.camera);
    setup.control = control_of(setup.camera, temporary);
    if (!setup.control.empty()) {
        setup.camera.environment.emplace_back("CAMERA_SIM_CONTROL", setup.control);
    }
    setup.version = TETHER_VERSION;
    setup.recorder = recorder.get();
    setup.output = options.output;
    setup.lines = options.lines;
    setup.changed = [&wake_up] {
        wake_up.wake();
    };
    auto server = std::make_unique<Server>(std::move(setup));

    Reading(options, *server, wake_up, interrupts).until_the_end();

    const bool all_written = server->flush(to_write_the_rest);
    if (all_written || server->client_is_gone()) {
        server.reset();
    } else {
        // Its writer is stuck in a pipe that nobody reads.
        [[maybe_unused]] const Server* const left = server.release();
    }
    if (recorder && !recorder->flush(host::after(to_write_the_rest))) {
        [[maybe_unused]] const Recorder* const left = recorder.release();
    } else {
        recorder.reset();
    }
    return 0;
}

}  // namespace serve
