// Plays one run of a record to a host. Told what the host says and what time it is, it says what is
// to be done; it reads and writes nothing itself.
#pragma once

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "host/process/clock.h"
#include "tether/replay/story.h"

namespace replay {

// What the player has done.
struct Actions {
    std::function<void(const Step& step, const std::string& text)> say;
    std::function<void(const std::string& path, Fate fate)> make_picture;
    // The host said something else, or more, or less. `line_number`: of the record; 0: behind it.
    std::function<void(std::size_t line_number, const std::string& sentence)> differs;
    std::function<void(const Ending& ending)> end;
};

class Player {
  public:
    // `folder`: the one that the host started the worker with; empty: none.
    Player(const Run& run, bool fast, std::string folder, Actions actions, host::TimePoint start);

    void hear(const std::string& line);
    // The host has closed the input, or sent a signal that means QUIT.
    void end_of_input();

    // Does what is due, and says when the next thing is; never: when the host has said something.
    host::TimePoint play(host::TimePoint now);

  private:
    bool play_step(host::TimePoint now);
    void wait_until(host::TimePoint at, host::TimePoint now);
    void answer_fence() const;
    bool await(const Step& step, host::TimePoint now);
    void compare(const Step& step, const std::string& heard, host::TimePoint now);
    void go_on_from(std::size_t position, const std::string& heard, host::TimePoint now);
    void say(const Step& step);
    void host_said(const Step& step, const std::string& heard, host::TimePoint now);
    bool pass_over_fence(const Step& step, host::TimePoint now);
    void come_to_the_end(host::TimePoint now);
    void end_early();
    void happened(const Step& step, host::TimePoint at);
    host::TimePoint due(Milliseconds at, host::TimePoint now) const;
    std::string in_the_hosts_folder(const Step& step);

    const Run& run_;
    const bool fast_;
    const Actions actions_;
    std::size_t position_ = 0;  // of run_.steps
    std::deque<std::string> heard_;
    bool input_ended_ = false;
    bool told_to_leave_ = false;  // at a place where the record has it
    bool over_ = false;
    unsigned fences_passed_over_ = 0;
    // The last step, and when it was played.
    Milliseconds step_at_{};
    host::TimePoint played_at_;
    host::TimePoint not_before_{};
    host::TimePoint next_;
    std::string folder_;           // the host's, not escaped
    std::string recorded_folder_;  // the record's
};

}  // namespace replay
