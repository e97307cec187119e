#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/process/clock.h"
#include "host/process/pipe.h"

using host::Clock;

inline double microseconds(Clock::duration duration) {
    return std::chrono::duration<double, std::micro>(duration).count();
}

inline double seconds(Clock::duration duration) {
    return std::chrono::duration<double>(duration).count();
}

// Ends the bench: what was to be measured does not work.
[[noreturn]] void give_up(const std::string& why);

// A child process under measurement. Written to and read from by the calling thread itself, so that
// no thread of the driver stands between the clock and the pipe.
class Subject {
  public:
    using Environment = std::vector<std::pair<std::string, std::string>>;

    explicit Subject(const std::string& executable, const std::vector<std::string>& arguments = {},
                     const Environment& environment = {});
    // Kills what still runs.
    ~Subject();
    Subject(const Subject&) = delete;
    Subject& operator=(const Subject&) = delete;

    pid_t process() const {
        return process_;
    }

    // Writes bytes, line feeds included.
    void say(std::string_view bytes);

    // The next line without its line feed; the view is good until the next call.
    std::string_view hear();
    // The same without falling asleep: the time when a line can be read, not when a reader has
    // woken up. Takes a processor of its own.
    std::string_view watch();
    // Lines before that one are passed over.
    void hear_until(std::string_view line);

    // Writes all the bytes while reading so many lines, whichever the pipes have room for, and
    // calls `heard` with the number of lines after each read.
    void pour(std::string_view bytes, long lines, const std::function<void(long)>& heard);

    // Waits until the process has ended.
    void await_end();

  private:
    // False when the pipe has no room.
    bool write_some(std::string_view& bytes);
    void read_some();

    pid_t process_;
    bool running_ = true;
    host::Descriptor input_;
    host::Descriptor output_;
    std::vector<char> buffer_;
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
};
