// Every length of time that the brain goes by, with its reason. Tests set their own.
#pragma once

#include <array>
#include <cstdint>

#include "host/values/time.h"

namespace host::brain {

struct Times {
    // From the process to READY|OK: the SDK and its adapters are loaded, on a cold disk too.
    Time to_be_ready = std::chrono::seconds(10);
    // A camera that is busy holds a command up for 6 s; nothing holds one up for longer.
    Time to_answer = std::chrono::seconds(15);
    // How often a worker with nothing to do is asked whether it still answers.
    Time between_fences = std::chrono::seconds(5);
    // The worker gives an opening up after 20 s by itself, but not in every case.
    Time to_open = std::chrono::seconds(30);
    // The SDK may bring a camera back by itself, which is gentler than opening a new session.
    Time to_come_back = std::chrono::seconds(4);
    // Between two ways of asking a camera that did not take a setting, and how often.
    Time between_asks = std::chrono::milliseconds(300);
    unsigned int asked_again = 4;
    // Between an opening that failed and the next; the last one for as long as it takes.
    std::array<Time, 5> back_off{std::chrono::milliseconds(500), std::chrono::seconds(1),
                                 std::chrono::seconds(2), std::chrono::seconds(4),
                                 std::chrono::seconds(8)};
    // The report of a file follows its log line at once; this allows for a thread that had to wait.
    Time report_follows = std::chrono::milliseconds(20);

    // The half-press alone takes 700 ms: a file that comes sooner was on its way before.
    Time too_soon = std::chrono::milliseconds(650);
    // After a shot without files, how long the next one's own file may come behind a late one.
    Time doubt = std::chrono::seconds(2);
    // How long after a shot without files a late one is reckoned with.
    Time late = std::chrono::seconds(120);
    // The other half of what may or may not be a pair.
    Time other_half = std::chrono::seconds(5);

    // Calls that lie further apart than this mean that this process or the machine stood still.
    // While there is a worker, wake_at() is never further away than `heartbeat`.
    Time stop = std::chrono::seconds(2);
    Time heartbeat = std::chrono::seconds(1);
    // How much later than its time-out an answer may be, less a margin.
    Time grace = std::chrono::milliseconds(900);

    // A worker that is lost more often is started once a `between_tries` only.
    unsigned int most_restarts = 5;
    Time restarts_count_for = std::chrono::minutes(3);
    Time between_tries = std::chrono::minutes(1);
    // Each step of the ladder: QUIT, end of input, SIGTERM; then SIGKILL.
    Time rung_in_order = std::chrono::seconds(5);
    Time rung_when_hung = std::chrono::seconds(1);
    // What SIGKILL does not end in this time is stuck in the system.
    Time after_sigkill = std::chrono::seconds(2);
    // Files that are on their way when the end is asked for.
    Time files_at_the_end = std::chrono::seconds(10);
    // A shot that is under way when the camera is to be let go.
    Time shot_at_disconnect = std::chrono::seconds(10);

    // A disk that does not answer: a look, or bringing in what was left behind.
    Time disk_silence = std::chrono::seconds(10);
    Time disk_sweep = std::chrono::seconds(60);
    Time disk_lock = std::chrono::seconds(25);  // the lock of a folder is waited for, 20 s

    // Until a request is answered, from its turn on.
    Time start_request = std::chrono::seconds(30);
    Time connect_request = std::chrono::seconds(60);
    Time disconnect_request = std::chrono::seconds(20);
    Time configure_request = std::chrono::seconds(60);
    Time shutdown_request = std::chrono::seconds(20);  // on top of its patience
};

// What bounds the brain's memory, whatever comes out of a worker or a client.
namespace limit {
inline constexpr std::size_t captures = 8;  // not fired yet
inline constexpr std::size_t requests = 64;
inline constexpr std::size_t reports = 1024;  // files asked about and not placed yet
inline constexpr std::size_t path = 4096;     // no file has a longer one
inline constexpr std::size_t held_lines = 4096;
inline constexpr std::size_t held_bytes = 1 << 20;
inline constexpr std::size_t stems = 256;  // pictures whose other half may still come
inline constexpr std::size_t sizes = 8;    // of the latest pictures
inline constexpr std::size_t camera_name = 256;
inline constexpr std::size_t shown_name = 255;       // of a file, in a problem
inline constexpr std::size_t file_name = 1023;       // no system takes a longer one
inline constexpr std::size_t reports_of_name = 128;  // more than such a name has room to forge
inline constexpr std::size_t shot_problems = 64;
inline constexpr std::size_t old_runs = 8;
inline constexpr std::size_t command = 4095;  // a longer line arrives as several
inline constexpr std::size_t staging = 128;   // what a command and a run add to the folder's path
}  // namespace limit

inline constexpr std::uint64_t little_room = std::uint64_t{2} << 30;
inline constexpr std::uint64_t files_of_room = 50;

inline constexpr Time never = Time::max();

}  // namespace host::brain
