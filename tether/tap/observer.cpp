#include "tether/tap/observer.h"

#include <signal.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>

#include "tether/live/session_words.h"

namespace tap {

using host::Clock;
using tether::in_seconds;
using tether::RecordLine;

namespace {

// A longer line is recorded in parts.
constexpr std::size_t longest_part = std::size_t{64} * 1024;
// What a worker that sees the end of its input has to leave; it takes 3 s at most.
constexpr std::chrono::seconds time_to_leave{4};
constexpr std::chrono::milliseconds look_every{20};

std::string ending_of(std::int64_t status) {
    const int wait_status = static_cast<int>(status);
    return "the worker ended with " + (WIFSIGNALED(wait_status)
                                           ? "signal " + std::to_string(WTERMSIG(wait_status))
                                           : "status " + std::to_string(WEXITSTATUS(wait_status)));
}

}  // namespace

Observer::Observer(tether::Record& record, std::string name, host::TimePoint start,
                   std::string folder)
    : record_(record), name_(std::move(name)), start_(start), judge_(std::move(folder)) {}

void Observer::observe(const host::Descriptor& notices) {
    Notice notice;
    while (!ended_ && read_notice(notices, notice)) {
        obey(notice);
    }
    if (!ended_) {
        tap_was_killed();
    }
    const auto now = Clock::now();
    for (const Complaint& complaint : judge_.complaints().kept()) {
        remark("complaint about " + in_seconds(complaint.at, 1) + ": " +
                   std::string(text_of(complaint.fault).what),
               now);
    }
}

void Observer::obey(const Notice& notice) {
    switch (notice.kind) {
        case Kind::started:
            worker_ = static_cast<pid_t>(notice.number);
            // As long as the group that the worker leads has another process in it, no other
            // process gets the worker's number.
            setpgid(0, worker_);
            break;
        case Kind::to_worker:
            cut(to_worker_, notice);
            break;
        case Kind::from_worker:
            cut(from_worker_, notice);
            break;
        case Kind::input_ended:
            deal_with(to_worker_, false, notice.at);
            judge_.input_ended(remark("the host closed the worker's input", notice.at));
            break;
        case Kind::host_left:
            remark("the host closed the worker's output", notice.at);
            break;
        case Kind::worker_deaf:
            remark("the worker closed its input", notice.at);
            break;
        case Kind::output_ended:
            deal_with(from_worker_, false, notice.at);
            remark("the worker closed its output", notice.at);
            break;
        case Kind::signalled:
            judge_.signalled(
                static_cast<int>(notice.number),
                remark("the host sent signal " + std::to_string(notice.number), notice.at));
            break;
        case Kind::stalled:
            judge_.stalled(remark("the host has not read for " +
                                      in_seconds(std::chrono::milliseconds(notice.number), 1),
                                  notice.at));
            break;
        case Kind::drained:
            remark("the host reads again, after " +
                       in_seconds(std::chrono::milliseconds(notice.number), 1),
                   notice.at);
            break;
        case Kind::out_of_memory:
            all_told_ = false;
            remark("the record ends here: the disk was too slow for the lines", notice.at);
            break;
        case Kind::ended:
            ended_ = true;
            deal_with(from_worker_, false, notice.at);
            judge_.worker_ended(remark(ending_of(notice.number), notice.at).at);
            break;
    }
}

void Observer::cut(Begun& begun, const Notice& notice) {
    std::string_view bytes = notice.bytes;
    for (std::size_t end; (end = bytes.find('\n')) != std::string_view::npos;) {
        begun.text += bytes.substr(0, end);
        bytes.remove_prefix(end + 1);
        deal_with(begun, true, notice.at);
    }
    begun.text += bytes;
    if (begun.text.size() > longest_part) {
        deal_with(begun, false, notice.at);
        begun.continued = true;
    }
}

void Observer::deal_with(Begun& begun, bool whole, host::TimePoint at) {
    if (begun.text.empty() && !whole) {
        return;
    }
    RecordLine line{std::chrono::round<std::chrono::milliseconds>(at - start_), begun.mark,
                    std::exchange(begun.text, {}), whole};
    record_.add(line.mark, line.text, at, whole);
    if (std::exchange(begun.continued, false)) {
        return;
    }
    if (begun.mark == '>') {
        judge_.host_says(line);
    } else {
        judge_.worker_says(line);
    }
}

RecordLine Observer::remark(const std::string& text, host::TimePoint at) {
    record_.note(text, at);
    return {std::chrono::round<std::chrono::milliseconds>(at - start_), '#', text};
}

void Observer::tap_was_killed() {
    const auto now = Clock::now();
    judge_.killed(remark("the tap was killed; the worker has seen the end of its input", now));
    end_worker();
}

void Observer::end_worker() {
    if (worker_ == 0) {
        return;
    }
    const auto now = Clock::now();
    const bool at_once =
        judge_.ladder_was_climbed(std::chrono::round<std::chrono::milliseconds>(now - start_));
    const auto deadline = now + (at_once ? host::Duration{} : host::Duration(time_to_leave));
    while (kill(worker_, 0) == 0) {
        if (Clock::now() >= deadline) {
            kill(worker_, SIGKILL);
            remark("the worker was killed with the tap", Clock::now());
            return;
        }
        std::this_thread::sleep_for(look_every);
    }
    remark("the worker has ended", Clock::now());
}

Verdict Observer::report() const {
    const std::string report = judge_.complaints().report();
    std::string text = "tether tap: ";
    text += report.empty() ? "the host did nothing wrong" : "the host did this wrong";
    if (!all_told_) {
        text += "; not all of it was seen: the disk was too slow";
    }
    if (!record_.trouble().empty()) {
        text += "; the record is not complete: " + record_.trouble();
    } else if (!name_.empty()) {
        text += "; the record is " + name_;
    }
    std::fputs((text + "\n" + report).c_str(), stderr);
    return report.empty() ? Verdict::no_complaint : Verdict::complaints;
}

}  // namespace tap
