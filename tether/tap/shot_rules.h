// What a host does wrong with shots that are out: it moves the folder, or ends the session, before
// their files are there.
#pragma once

#include <deque>
#include <string>
#include <string_view>

#include "tether/tap/complaints.h"

namespace tap {

class ShotRules {
  public:
    // `folder`: what the worker was started with; empty: none.
    ShotRules(Complaints& complaints, std::string folder);

    void host_says(std::string_view command, const tether::RecordLine& line);
    void worker_says(const tether::RecordLine& line);
    void input_ended(const tether::RecordLine& remark);

  private:
    struct Shot {
        tether::RecordLine capture;
        std::chrono::milliseconds since{};  // CAPTURE, then REMOTE_CAPTURED
        bool fired = false;
        int due = 1;  // files
    };

    void forget_what_came_to_nothing(std::chrono::milliseconds now);
    void end_session(const tether::RecordLine& line);
    void fired(std::chrono::milliseconds at);
    void file_came();

    Complaints& complaints_;
    std::string folder_;  // escaped, as the host last named it
    bool to_card_ = false;
    bool pairs_ = false;
    bool over_ = false;
    std::deque<Shot> out_;
};

}  // namespace tap
