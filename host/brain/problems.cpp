// Which problems stand, and who hears of them.
#include <algorithm>

#include "host/brain/brain.h"

namespace host::brain {
namespace {

constexpr Code of_the_camera[] = {Code::camera_not_found, Code::camera_no_answer,
                                  Code::camera_refused, Code::camera_lost, Code::camera_error};

}  // namespace

void Brain::raise(const Problem& problem) {
    if (problems_.raise(problem)) {
        mention(problem);
        dirty_ = true;
    }
}

// At a time one thing is wrong with the camera.
void Brain::raise_camera_problem(const Problem& problem) {
    for (const Code code : of_the_camera) {
        if (code != problem.code) {
            clear(code);
        }
    }
    raise(problem);
}

void Brain::clear(Code code) {
    dirty_ = problems_.clear(code) || dirty_;
}

void Brain::clear_camera_problems() {
    for (const Code code : of_the_camera) {
        clear(code);
    }
}

// Nobody looks for a camera any more: neither with it nor with its settings is anything wrong.
void Brain::clear_session_problems() {
    clear_camera_problems();
    for (const Code code :
         {Code::destination_not_taken, Code::file_type_not_taken, Code::card_missing}) {
        clear(code);
    }
}

void Brain::mention(const Problem& problem) {
    do_now(ProblemCame{problem});
}

// What keeps the session from being ready, in one problem.
Problem Brain::standing_in_the_way() const {
    if (shut_ || ending_) {
        return {Code::not_connected, "The session is being ended.", {}, {}};
    }
    const std::vector<Problem>& all = problems_.all();
    const auto found = std::find_if(all.begin(), all.end(), [](const Problem& problem) {
        return severity(problem.code) == Severity::error;
    });
    if (found != all.end()) {
        return *found;
    }
    if (folder_waited_for_) {
        return *folder_waited_for_;
    }
    // What is still being waited for when a request is out of time is no problem that stands yet.
    if (state_ == State::starting && (worker_ == Worker::none || worker_ == Worker::making_run)) {
        return {Code::folder_gone, "The disk of the folder has not answered yet.", {}, {}};
    }
    if (state_ == State::starting) {
        return {Code::worker_not_starting, "The worker is not ready yet.", {}, {}};
    }
    return {Code::not_connected, "No camera is connected.", {}, {}};
}

// A camera goes on shooting into a folder without room, and what does not fit is lost.
void Brain::look_at_room(std::uint64_t room) {
    std::uint64_t largest = 0;
    for (const std::uint64_t size : last_sizes_) {
        largest = std::max(largest, size);
    }
    if (room < little_room || room / files_of_room < largest) {
        if (!problems_.stands(Code::disk_nearly_full)) {
            raise({Code::disk_nearly_full,
                   "The folder's disk has room for " + std::to_string(room >> 20) + " MiB only.",
                   {},
                   {}});
        }
    } else {
        clear(Code::disk_nearly_full);
    }
}

}  // namespace host::brain
