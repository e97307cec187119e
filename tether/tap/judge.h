// Hears a conversation as it passes, and knows what the host does wrong. Looks at no clock.
#pragma once

#include <optional>
#include <string>

#include "tether/tap/complaints.h"
#include "tether/tap/session_rules.h"
#include "tether/tap/shot_rules.h"

namespace tap {

class Judge {
  public:
    explicit Judge(std::string folder) : shots_(complaints_, std::move(folder)) {}

    // A line without its line feed, or the first 64 KiB of one.
    void host_says(const tether::RecordLine& line);
    void worker_says(const tether::RecordLine& line);

    // Each with a remark that says what happened, at its time.
    void input_ended(const tether::RecordLine& remark);
    void signalled(int number, const tether::RecordLine& remark);
    void stalled(const tether::RecordLine& remark);
    void killed(const tether::RecordLine& remark);
    void worker_ended(std::chrono::milliseconds at);

    // QUIT, the end of input and SIGTERM have been tried, each with its time.
    bool ladder_was_climbed(std::chrono::milliseconds now) const;

    const Complaints& complaints() const {
        return complaints_;
    }

  private:
    void look_at_bytes(const tether::RecordLine& line);

    Complaints complaints_;
    SessionRules session_{complaints_};
    ShotRules shots_;
    std::optional<tether::RecordLine> last_of_worker_;
    std::optional<std::chrono::milliseconds> quit_;
    std::optional<std::chrono::milliseconds> input_ended_;
    std::optional<std::chrono::milliseconds> terminated_;
};

}  // namespace tap
