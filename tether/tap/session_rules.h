// What a host does wrong with the session: it opens twice, leaves an error without an answer, or
// shoots before it can know that there is anything to shoot with.
#pragma once

#include <deque>
#include <optional>
#include <string_view>

#include "tether/tap/complaints.h"

namespace tap {

class SessionRules {
  public:
    explicit SessionRules(Complaints& complaints) : complaints_(complaints) {}

    void host_says(std::string_view command, const tether::RecordLine& line);
    void worker_says(const tether::RecordLine& line);
    // QUIT, the end of input, or of the worker.
    void over(std::chrono::milliseconds at);

  private:
    void on_connect(const tether::RecordLine& line);
    void on_capture(const tether::RecordLine& line);
    void hear_connected(const tether::RecordLine& line);
    void hear_disconnected(const tether::RecordLine& line);
    void hear_error(const tether::RecordLine& line);
    bool is_opening() const;
    void unsettle(const tether::RecordLine& by);

    Complaints& complaints_;
    bool up_ = false;
    std::optional<std::chrono::milliseconds> lost_;
    std::deque<tether::RecordLine> asked_;     // CONNECT and DISCONNECT, not answered yet
    std::optional<tether::RecordLine> error_;  // while opening, not answered yet
    bool blamed_ = false;                      // for the CONNECT behind it

    // Settings are through when the file type has been said, which comes last, or a PRIME that was
    // sent behind them has been answered.
    bool settled_ = false;
    unsigned round_ = 0;           // of settings
    std::deque<unsigned> fences_;  // the rounds that they were sent in
    std::optional<tether::RecordLine> unsettled_by_;
};

}  // namespace tap
