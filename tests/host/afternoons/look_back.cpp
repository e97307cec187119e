// What can be judged only when the afternoon is over.
#include <algorithm>
#include <cstdlib>

#include "tests/host/afternoons/witness.h"

namespace afternoons {
namespace {

constexpr Time too_soon{milliseconds(650)};
constexpr Time doubt{seconds(2)};

// "DSC00012" is newer than "DSC00011", and "DSC00001" than "DSC09999".
bool is_later(const std::string& stem, const std::string& than) {
    if (stem.size() != 8 || than.size() != 8 || stem.substr(0, 3) != "DSC" ||
        than.substr(0, 3) != "DSC") {
        return false;
    }
    const int ahead = (std::atoi(stem.c_str() + 3) - std::atoi(than.c_str() + 3) + 10000) % 10000;
    return ahead > 0 && ahead < 5000;
}

}  // namespace

void Witness::must_be_ready(const host::SessionState& state) {
    if (state.state != host::State::ready) {
        wrong("G5", "nothing is wrong any more, and the session is " +
                        std::string(host::word(state.state)));
    }
}

void Witness::must_be_complete(host::RequestId capture) {
    for (const Asked& asked : asked_) {
        if (asked.id != capture) {
            continue;
        }
        const auto* shot = asked.answer ? std::get_if<host::Shot>(&*asked.answer) : nullptr;
        if (shot == nullptr || shot->status != host::ShotStatus::complete) {
            wrong("G4", "nothing is wrong any more, and a shot is not complete");
        }
        return;
    }
}

void Witness::must_be_ended(host::RequestId shutdown) {
    for (const Asked& asked : asked_) {
        if (!asked.answered) {
            wrong("G1", "request " + std::to_string(asked.id) + " is never answered");
        }
        const auto* end = asked.id == shutdown && asked.answer
                              ? std::get_if<host::Ended>(&*asked.answer)
                              : nullptr;
        if (asked.id == shutdown &&
            (end == nullptr || end->worker != host::WorkerEnd::quit || end->status != 0)) {
            wrong("G10", "a worker that is well does not end with QUIT");
        }
    }
    must_be_shut();
}

void Witness::must_be_shut() {
    for (const Asked& asked : asked_) {
        if (!asked.answered) {
            wrong("G1", "request " + std::to_string(asked.id) + " is never answered");
        }
    }
    if (worker_ != nullptr && worker_->alive() && !worker_->cannot_be_killed) {
        wrong("G10", "a worker is left behind");
    }
    for (const auto& [path, folder] : disk_.folders) {
        if (folder.open && !is_written_to(path)) {
            wrong("G10", path + " is kept for nobody");
        }
    }
    check_files();
}

void Witness::look_back() {
    for (const Shown& shown : shown_) {
        if (shown.picture.shot && !shown.picture.recovered) {
            check_whose(shown);
        }
    }
    check_pairs();
    for (const auto& [path, folder] : disk_.folders) {
        for (const Disk::Entry& entry : folder.ledger) {
            if (by_id_.count(entry.picture.id) == 0 && folder.open) {
                wrong("G2", "a picture was placed and never told: " + entry.picture.id);
            }
        }
    }
}

// By a worker that cannot be ended.
bool Witness::is_written_to(const std::string& folder) const {
    return std::any_of(disk_.runs.begin(), disk_.runs.end(), [&](const auto& entry) {
        return entry.second.folder == folder && disk_.is_held(entry.first);
    });
}

// What this brain's workers have left behind.
void Witness::check_files() {
    for (const auto& [name, run] : disk_.runs) {
        if (run.generation != disk_.generation || disk_.is_held(name)) {
            continue;
        }
        for (const auto& [file, number] : run.staged) {
            const bool named = std::any_of(problems_.begin(), problems_.end(),
                                           [&file = file](const std::string& text) {
                                               return text.find(file) != std::string::npos;
                                           });
            if (!named) {
                std::string text = file;
                text.append(" was left in ").append(name).append(", and no problem names it");
                wrong("G2", text);
            }
        }
    }
}

const Press* Witness::press_of(Number file) const {
    const auto found = presses_.find(disk_.files[file - 1].press);
    return found == presses_.end() ? nullptr : &found->second;
}

// The first one of its own whose report was read in that time.
const File* Witness::own_file(const Fired& fired, Time from, Time until) const {
    for (const File& file : disk_.files) {
        const Press* press = press_of(file.number);
        if (press != nullptr && press->capture == fired.number && file.reported &&
            file.reported_by == fired.run && *file.reported >= from && *file.reported < until &&
            file.kind != host::Kind::other && file.name.substr(0, 3) == "DSC") {
            return &file;
        }
    }
    return nullptr;
}

// A counter that was set back gives it a name like an older one's.
bool Witness::looks_old(const Press& press) const {
    const auto is_before = [&press](const auto& entry) {
        return entry.first < press.number;
    };
    const auto of_its_counting = [&](const auto& entry) {
        return is_before(entry) && entry.second.counting == press.counting;
    };
    const auto of_its_name = [&](const auto& entry) {
        return is_before(entry) && entry.second.stem == press.stem;
    };
    return std::none_of(presses_.begin(), presses_.end(), of_its_counting) ||
           std::any_of(presses_.begin(), presses_.end(), of_its_name);
}

void Witness::check_whose(const Shown& shown) {
    const Fired* fired = fired_as(*shown.picture.shot, shown.picture.tag);
    const File& file = disk_.files[shown.file - 1];
    const Press* press = press_of(shown.file);
    if (fired == nullptr) {
        return wrong("G3", "a picture is said to be of a shot that was never fired");
    }
    if (press == nullptr || press->capture == fired->number || !file.reported) {
        return;
    }
    const std::string what = shown.picture.id + " (" + file.name + ") is said to be of shot " +
                             std::to_string(fired->shot) + ", ";
    // What was taken for the other half of a picture of that shot.
    const bool half = std::any_of(shown_.begin(), shown_.end(), [&](const Shown& one) {
        return one.picture.pair == shown.picture.pair && one.picture.id != shown.picture.id &&
               one.picture.kind != shown.picture.kind;
    });
    if (half) {
        return;  // pairs are looked at by themselves
    }
    const Time heard = *file.reported;
    if (heard < fired->at + too_soon) {
        return wrong("G3", what + "and came sooner than any can");
    }
    const bool after_empty = fired != fired_.data() && (fired - 1)->brain == fired->brain &&
                             (fired - 1)->empty &&
                             (fired - 1)->destination != host::SaveDestination::card;
    const File* before = own_file(*fired, fired->at + too_soon, heard);
    // One that was not found where it was reported says nothing.
    if (before != nullptr && std::none_of(shown_.begin(), shown_.end(), [before](const Shown& one) {
            return one.file == before->number && !one.picture.recovered;
        })) {
        before = nullptr;
    }
    if (before != nullptr && !after_empty && !looks_old(*press_of(before->number))) {
        return wrong("G3", what + "which had one of another name by then");
    }
    const Time over = fired->over.value_or(Time::max());
    const File* behind = own_file(*fired, heard, std::min(heard + doubt, over));
    if (after_empty && before == nullptr && behind != nullptr &&
        is_later(behind->stem, file.stem) && !looks_old(*press_of(behind->number))) {
        return wrong("G3", what + "which followed a shot without files and had its own soon");
    }
}

void Witness::check_pairs() {
    for (std::size_t one = 0; one < shown_.size(); ++one) {
        for (std::size_t other = one + 1; other < shown_.size(); ++other) {
            const Shown& first = shown_[one];
            const Shown& second = shown_[other];
            if (first.picture.id == second.picture.id || first.picture.recovered ||
                second.picture.recovered) {
                continue;
            }
            const Press* press = press_of(first.file);
            const Press* second_press = press_of(second.file);
            const File& file = disk_.files[first.file - 1];
            const File& second_file = disk_.files[second.file - 1];
            const bool same_pair = first.picture.pair == second.picture.pair;
            const bool told_apart =
                press->counting == second_press->counting || press->camera != second_press->camera;
            if (same_pair && press->number != second_press->number && told_apart) {
                wrong("G3", "files of two shots are told as a pair: " + file.name + " and " +
                                second_file.name);
            }
            const bool plain = file.stem == press->stem && second_file.stem == press->stem;
            const auto may_be_pair = [](const Fired* fired) {
                return fired == nullptr ||
                       (fired->type != host::FileType::jpeg && fired->type != host::FileType::raw);
            };
            const Fired* fired = press->capture ? &fired_[*press->capture - 1] : nullptr;
            const bool known =
                may_be_pair(fired) &&
                may_be_pair(first.picture.shot ? fired_as(*first.picture.shot, first.picture.tag)
                                               : nullptr);
            // A name that comes again from one worker cannot be told from the half that lacks.
            const bool once = std::none_of(
                disk_.files.begin(), disk_.files.end(), [&file, press](const File& known_file) {
                    return known_file.press != press->number && known_file.stem == file.stem &&
                           known_file.reported_by == file.reported_by;
                });
            if (!same_pair && press->number == second_press->number && plain && known && once &&
                first.brain == second.brain && file.reported_by == second_file.reported_by) {
                wrong("G3", "a pair is split: " + file.name + " and " + second_file.name);
            }
        }
    }
}

}  // namespace afternoons
