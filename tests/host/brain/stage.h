// A brain with a worker, a camera and a disk that behave, until a test has them do otherwise. Time
// is what a test says it is.
#pragma once

#include <deque>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/brain/brain.h"

namespace host::brain {

using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;

using Outcome = std::pair<ShotStatus, Code>;

Wishes wishes(SaveDestination destination, std::optional<FileType> type = {});
Capture tagged(const std::string& tag);
Capture expiring(Time after);
Configure folder(const std::string& value);
Configure type(FileType value);

class Stage {
  public:
    explicit Stage(Wishes wishes = {});

    // Up to a session with a camera; what was said and told on the way is forgotten.
    void get_ready();
    void get_idle();

    // The worker's line, now. Nothing of what the brain does is answered but by the worker and the
    // disk below.
    void hear(std::string_view line);
    void tell(const News& news);
    void answer(const FileAnswer& answer);
    RequestId ask(const Request& request);

    // Time goes on, and pass() is called whenever the brain wants it and at the end.
    void after(Time duration);
    // Nobody calls the brain for so long; then pass() is called.
    void stand_still(Time duration);

    // The session is lost, and the worker says so. Unplugged, the camera does not come back.
    void lose();
    void unplug();
    void bring_back();

    // For a disk that does not answer by itself: what it says of the folder that it was asked for.
    FolderOpened opened(const std::string& folder);
    void refuse_folder(Code code, const std::string& text);

    // A capture, up to the moment when its shutter sequence was sent.
    RequestId shoot(const std::string& tag = {});

    // A file lands in the worker's folder and is reported.
    void file(const std::string& name);
    void report(const std::string& name);
    // Only the two lines, in one go, whatever there is on disk.
    void say_landed(const std::string& name, const std::string& folder = "/shots/.incoming/");

    // What the brain has said and told since these were last asked.
    std::vector<std::string> said();
    bool said(const std::string& line);
    std::size_t times_said(const std::string& line);
    std::vector<State> states();
    std::vector<Picture> pictures();
    std::vector<Shot> shots();
    std::vector<Problem> problems();
    bool told(Code code);
    template <typename Work>
    std::vector<Work> asked_of_disk();
    std::vector<StartWorker> workers();
    std::vector<EndWorker> ladders();
    void forget();

    // The one answer to the request: not given so far, or given twice, is a failure of the test.
    template <typename Kind>
    Kind answer_to(RequestId request);
    // What became of the shot, and its first problem.
    Outcome outcome(RequestId capture);
    bool is_answered(RequestId request) const;
    std::size_t answers(RequestId request) const;

    SessionState state() const {
        return brain.state();
    }
    bool stands(Code code) const;
    Problem standing(Code code) const;

    // The worker. Set to false, it takes commands and says nothing.
    bool worker_answers = true;
    bool worker_starts = true;
    bool worker_gets_ready = true;
    bool worker_ends = true;  // when it is told to
    // The camera.
    bool camera_there = true;
    bool camera_answers = true;  // to CONNECT
    bool session = false;
    bool card = true;
    bool takes_destination = true;
    bool takes_type = true;
    bool type_readable = true;
    std::string dial = "jpeg";
    std::string camera_name = "MODEL-A";
    // The disk. Set to false, it does nothing until it is true again.
    bool disk_answers = true;
    bool folder_there = true;
    bool takes_files = true;
    std::uint64_t room = std::uint64_t{100} << 30;
    std::uint64_t file_size = 1000;
    std::set<std::string> staged;   // names in the worker's folder
    std::set<std::string> damaged;  // of these
    std::string why = "cut short";
    std::string run = "run-1";  // the one at work

    Brain brain;
    Time now = seconds(1000);

  private:
    struct Line {
        Time at;
        std::string text;
    };

    void work();
    void carry_out(const Effect& effect);
    void obey(const std::string& command);
    void answer_disk(const FileWork& work);
    Examined examine(const Examine& work);
    void worker_says(const std::string& line);
    void hear_what_is_due();
    void hear_all(const std::string& text);

    std::vector<Effect> log_;
    std::map<RequestId, std::vector<Answer>> answers_;
    std::deque<Line> lines_;  // that the worker will write
    std::deque<FileWork> disk_work_;
    std::map<Ticket, Examined> examined_;
    std::set<std::string> placed_;
    Time busy_until_{};
    std::string destination_ = "both";
    unsigned int runs_ = 0;
    RequestId last_request_ = 0;
};

struct Dial {
    std::string at;
};

// One with a session.
class ReadyStage : public Stage {
  public:
    explicit ReadyStage(Wishes wishes = {});
    explicit ReadyStage(Dial of_the_camera);
};

template <typename Work>
std::vector<Work> Stage::asked_of_disk() {
    std::vector<Work> found;
    for (const Effect& effect : log_) {
        if (const auto* work = std::get_if<FileWork>(&effect)) {
            if (const auto* one = std::get_if<Work>(work)) {
                found.push_back(*one);
            }
        }
    }
    return found;
}

template <typename Kind>
Kind Stage::answer_to(RequestId request) {
    const std::vector<Answer>& all = answers_[request];
    if (all.size() != 1 || !std::holds_alternative<Kind>(all.front())) {
        ADD_FAILURE() << all.size() << " answers to request " << request
                      << (all.empty() ? "" : ", of kind ")
                      << (all.empty() ? "" : std::to_string(all.front().index()));
        return {};
    }
    return std::get<Kind>(all.front());
}

}  // namespace host::brain
