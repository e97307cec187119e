// Pipes to and from a worker. No process that this one starts inherits an end by accident.
#pragma once

#include <optional>
#include <string_view>
#include <utility>

#include "host/process/clock.h"

namespace host {

// Owns one file descriptor.
class Descriptor {
  public:
    Descriptor() = default;
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    ~Descriptor() {
        close();
    }

    int number() const {
        return number_;
    }
    bool is_open() const {
        return number_ >= 0;
    }
    void close();

  private:
    int number_ = -1;
};

struct Pipe {
    Descriptor read_end;
    Descriptor write_end;
};

// Nothing when the process has no descriptors left; errno says why.
std::optional<Pipe> make_pipe();

void make_non_blocking(const Descriptor& descriptor);

// Writes everything to a non-blocking pipe, waiting for room until the deadline. False when the
// reader has gone or made no room; SIGPIPE is never raised.
bool write_all(const Descriptor& pipe, std::string_view bytes, TimePoint deadline);

// Milliseconds until the deadline as poll() takes them: rounded up, never negative.
int poll_timeout(TimePoint deadline);

}  // namespace host
