#include "tether/shoot/report.h"

#include <algorithm>

#include "tether/live/session_words.h"

namespace tether {

// The camera comes back and the worker is replaced without anybody doing anything, so that is told
// and costs nothing unless it costs a shot.
void Report::add(const host::Problem& problem) {
    switch (problem.code) {
        case host::Code::camera_lost:
            ++losses;
            return;
        case host::Code::camera_not_found:
        case host::Code::camera_no_answer:
        case host::Code::camera_refused:
        case host::Code::camera_error:
        case host::Code::not_connected:
            return;  // counts when no session comes of it, and is told then
        case host::Code::disk_nearly_full:
        case host::Code::worker_not_starting:
        case host::Code::worker_gone:
        case host::Code::worker_hangs:
        case host::Code::worker_floods:
            return add_trouble(sentence(problem));
        default:
            break;
    }
    sound = false;
    add_trouble(sentence(problem));
}

// A sentence that says more than an earlier one takes its place.
void Report::add_trouble(const std::string& sentence) {
    for (std::string& trouble : troubles) {
        if (trouble.starts_with(sentence)) {
            return;
        }
        if (sentence.starts_with(trouble)) {
            trouble = sentence;
            return;
        }
    }
    troubles.push_back(sentence);
}

std::size_t Report::fired() const {
    return static_cast<std::size_t>(std::count_if(
        shots.begin(), shots.end(),
        [](const host::Shot& shot) { return shot.status != host::ShotStatus::refused; }));
}

bool Report::asked_for(const host::Picture& picture) const {
    return picture.shot && std::any_of(shots.begin(), shots.end(), [&](const host::Shot& shot) {
               return shot.number == picture.shot;
           });
}

bool Report::good() const {
    return sound && shots.size() == planned && ended && what_was_wrong(*ended).empty() &&
           std::all_of(shots.begin(), shots.end(), [](const host::Shot& shot) {
               return shot.status == host::ShotStatus::complete && shot.problems.empty();
           });
}

}  // namespace tether
