// What a host does wrong with its worker, and what it should do instead.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tether/conversation/record_line.h"

namespace tap {

enum class Fault {
    output_not_drained,
    capture_too_soon,
    folder_changed,
    files_left_behind,
    error_not_answered,
    connected_twice,
    line_too_long,
    odd_byte,
    internal_command,
    ladder_left_out,
};

struct FaultText {
    std::string_view what;
    std::string_view instead;
};

// In the order of the enumeration.
inline constexpr std::array<FaultText, 10> fault_texts{{
    {"output not read for 2 s",
     "Read standard output all the time, on a thread of its own if need be: a full pipe stops the "
     "worker."},
    {"CAPTURE before the settings were through",
     "Wait for CONNECTED, and after each change of a setting: send PRIME, and shoot once "
     "PRIME_DONE has come."},
    {"another folder with a file on its way",
     "Wait for the last DOWNLOADED of the shot, send PRIME, and name the new folder once "
     "PRIME_DONE has come."},
    {"the session ended with files on their way",
     "Wait for the last DOWNLOADED of the shot, or 20 s from REMOTE_CAPTURED: what is on its way "
     "when the session closes is lost to the computer."},
    {"an error while opening not answered by DISCONNECT",
     "Send DISCONNECT, wait for DISCONNECTED, then CONNECT: the camera's handle stays taken until "
     "then."},
    {"CONNECT while open",
     "CONNECT once. With the camera gone, or to be sure: DISCONNECT, wait for DISCONNECTED, then "
     "CONNECT."},
    {"a line of more than 4,095 bytes",
     "Write shorter lines: the worker reads a long one as several commands."},
    {"a carriage return or a zero byte in a line",
     "End lines with a line feed alone, and escape what stands in a path: %0D is a carriage "
     "return. A path has no zero byte."},
    {"an internal command",
     "Leave names that begin with __ to the worker: what they do is not promised."},
    {"the worker killed before the ladder",
     "QUIT, after 5 s close its standard input, after 5 s more SIGTERM, after 5 s more SIGKILL."},
}};

constexpr const FaultText& text_of(Fault fault) {
    return fault_texts[static_cast<std::size_t>(fault)];
}

// What is remembered of a host that asks without end, and is not answered.
constexpr std::size_t most_unanswered = 1000;

// Behind the others, the first of which is forgotten when there are too many.
template <typename Queue, typename Value>
void remember(Queue& queue, Value value) {
    queue.push_back(std::move(value));
    if (queue.size() > most_unanswered) {
        queue.pop_front();
    }
}

struct Complaint {
    Fault fault{};
    std::chrono::milliseconds at{};
    std::vector<tether::RecordLine> lines;  // that show it
};

// Kept in the order in which they came. Of each fault the first few; the others are counted.
class Complaints {
  public:
    void add(Fault fault, std::chrono::milliseconds at, std::vector<tether::RecordLine> lines);

    bool empty() const {
        return kept_.empty();
    }
    const std::vector<Complaint>& kept() const {
        return kept_;
    }

    // For a person; empty when there are none.
    std::string report() const;

  private:
    std::vector<Complaint> kept_;
    std::array<std::size_t, fault_texts.size()> counts_{};
};

}  // namespace tap
