// What has been told, kept for pages that come, come back or read slowly. Takes at most twice
// `most_bytes`, whoever reads.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>

#include "host/process/clock.h"
#include "host/process/mutex.h"

namespace console {

// Every operation may be called from any thread; only next() waits.
class Events {
  public:
    static constexpr std::size_t usual_bytes = std::size_t{8} << 20;

    explicit Events(std::size_t most_bytes = usual_bytes);

    // Each text is a notification, without a line break.
    void tell(std::string text);
    void tell_state(std::string text);
    void tell_line(std::string text);  // of the wire
    void tell_call(std::string text);  // of the SDK

    // Whether lines are for all pages, or only for those that say so.
    void want_lines(bool wanted);

    // Nothing comes any more, and nobody waits.
    void end();

    // One page.
    struct Reader {
        std::uint64_t after = 0;  // the event that it was given last
        std::uint64_t lines = 0;  // of which so many were lines
        bool wants_lines = false;
        bool begun = false;  // has been told the state, or knows it
        bool missed = false;
        std::uint64_t number = 0;  // of the readers of all times
    };

    // One that is older than so many others ends: pages that went away without a word.
    static constexpr std::uint64_t most_readers = 16;

    // `after` as the browser sends it: the id of an event, "0" for all that is remembered, or empty
    // for what comes from now on.
    Reader reader(std::string_view after, bool wants_lines);

    // What comes next, as the body of an event stream has it; a comment when nothing has come by
    // the deadline. Nothing: it has ended, or for this reader.
    std::optional<std::string> next(Reader& reader, host::TimePoint deadline);

  private:
    enum class Kind { news, line, call };
    struct Event {
        std::uint64_t number = 0;
        Kind kind = Kind::news;
        std::uint64_t lines = 0;  // up to and with this one
        std::string text;
    };
    // Kept apart, so that a flood of lines costs no pictures.
    struct Kept {
        std::deque<Event> events;
        std::size_t bytes = 0;
        std::uint64_t lost = 0;  // the number of the last that was dropped
    };

    void add(Kind kind, std::string text);
    void drop_oldest(Kept& kept) HOST_REQUIRES(mutex_);
    std::string begin(Reader& reader) HOST_REQUIRES(mutex_);
    std::string collect(Reader& reader) HOST_REQUIRES(mutex_);
    void append(std::string& text, const Event& event, Reader& reader) HOST_REQUIRES(mutex_);
    std::string id(std::uint64_t number, std::uint64_t lines) const;
    std::optional<Reader> read_id(std::string_view text) const;

    const std::size_t most_bytes_;
    const std::string epoch_;  // of this run
    host::Mutex mutex_;
    std::condition_variable told_;
    Kept news_ HOST_GUARDED_BY(mutex_);
    Kept lines_ HOST_GUARDED_BY(mutex_);
    std::string state_ HOST_GUARDED_BY(mutex_);
    std::uint64_t last_ HOST_GUARDED_BY(mutex_) = 0;
    std::uint64_t lines_told_ HOST_GUARDED_BY(mutex_) = 0;
    std::uint64_t readers_ HOST_GUARDED_BY(mutex_) = 0;
    bool lines_wanted_ HOST_GUARDED_BY(mutex_) = false;
    bool ended_ HOST_GUARDED_BY(mutex_) = false;
};

}  // namespace console
