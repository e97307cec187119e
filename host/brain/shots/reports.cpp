// Files, from the worker's report to their place. The disk decides whether there is one.
#include <algorithm>
#include <utility>

#include "host/brain/brain.h"
#include "host/brain/text.h"
#include "host/process/fields.h"

namespace host::brain {

void Brain::hear_downloaded(std::string_view text) {
    const std::string path = unescape_field(text);
    if (run_.name.empty()) {
        return;
    }
    if (path.size() > limit::path) {
        return mention({Code::picture_not_there,
                        "A picture was reported under a path that no file can have.",
                        {},
                        {}});
    }
    if (reports_.size() >= limit::reports) {
        missed_reports_ = true;
        return;
    }
    Report report;
    report.run = run_.name;
    report.heard = at_;
    report.session = sessions_;
    if (shot_ && shot_->step >= ShotInHand::Step::firing && !shot_->lost_by) {
        report.window = shot_->shot.number;
    }
    const Ticket ticket = ++last_ticket_;
    reports_.emplace(ticket, std::move(report));
    ask_disk(Examine{ticket, run_.name, path}, times_.disk_silence);
}

void Brain::on(const Examined& answer) {
    const auto found = reports_.find(answer.ticket);
    if (found == reports_.end() || found->second.placing || found->second.doubted) {
        return;
    }
    if (answer.room) {
        look_at_room(*answer.room);
    }
    found->second.file = answer;
    const std::string name(beginning(answer.camera_name, limit::shown_name));
    switch (answer.verdict) {
        case Verdict::there:
            return attribute(answer.ticket, found->second);
        case Verdict::reported_before:
            break;
        case Verdict::not_there:
            look_in_old_runs();
            complain(found->second, {Code::picture_not_there,
                                     "A picture was reported that is not there: " + name,
                                     {},
                                     {}});
            break;
        case Verdict::outside:
            complain(found->second, {Code::picture_outside,
                                     "A picture outside the folder was reported: " + name,
                                     {},
                                     {}});
            break;
        case Verdict::not_a_file:
            complain(found->second, {Code::picture_not_placed,
                                     "What was reported as a picture is no file: " + name,
                                     {},
                                     {}});
            break;
    }
    drop_report(answer.ticket);
}

// Of a file that may have been one of the shot in hand.
void Brain::complain(const Report& report, Problem problem) {
    if (shot_ && report.window == shot_->shot.number) {
        return blame(std::move(problem));
    }
    mention(problem);
}

// It may have been meant for the folder of before.
void Brain::look_in_old_runs() {
    if (sweeps_ > 0) {
        return;
    }
    for (const Run& run : old_runs_) {
        sweep(run.name, false);
    }
}

void Brain::place(Ticket ticket, Report& report, const Stem& under) {
    report.placing = true;
    report.doubted = false;
    report.shot = under.shot;
    report.under = under;
    Place work;
    work.ticket = ticket;
    work.shot = under.shot;
    work.tag = under.tag;
    work.name = under.name;
    work.pair = under.pair;
    if (under.shot) {
        work.after =
            std::chrono::duration_cast<std::chrono::milliseconds>(report.heard - under.fired);
    }
    ask_disk(std::move(work), times_.disk_silence);
}

std::string Brain::key_of(const Report& report) {
    return report.run + "/" + report.file.camera_name;
}

void Brain::on(const Placed& answer) {
    const auto found = reports_.find(answer.ticket);
    if (found == reports_.end()) {
        return;
    }
    const Report report = found->second;
    last_sizes_.push_back(answer.picture.bytes);
    if (last_sizes_.size() > limit::sizes) {
        last_sizes_.pop_front();
    }
    do_now(PictureCame{answer.picture});
    const bool in_hand = shot_ && report.shot == shot_->shot.number;
    if (in_hand) {
        shot_->shot.pictures.push_back(answer.picture);
    }
    if (!answer.picture.whole) {
        Problem damaged{Code::picture_damaged,
                        "A picture is damaged: " + answer.picture.path +
                            (report.file.why.empty() ? "" : " (" + report.file.why + ")"),
                        {},
                        report.shot};
        if (in_hand) {
            blame(std::move(damaged));
        } else {
            mention(damaged);
        }
    }
    drop_report(answer.ticket);
}

void Brain::on(const NotPlaced& answer) {
    const auto found = reports_.find(answer.ticket);
    if (found == reports_.end()) {
        return;
    }
    if (not_placed_.size() < limit::stems) {
        not_placed_.insert_or_assign(key_of(found->second), found->second.under);
    }
    Problem problem = answer.problem;
    problem.shot = found->second.shot;
    if (shot_ && problem.shot == shot_->shot.number) {
        blame(std::move(problem));
    } else {
        mention(problem);
    }
    drop_report(answer.ticket);
}

void Brain::drop_report(Ticket ticket) {
    const Report report = reports_.extract(ticket).mapped();
    if (reports_.empty() && std::exchange(missed_reports_, false) && !run_.name.empty()) {
        sweep(run_.name, false);
    }
    sweep_left_runs();
    if (!shot_ || report.window != shot_->shot.number ||
        shot_->step != ShotInHand::Step::waiting_for_files) {
        return;
    }
    if (has_all_files() || (shot_->lost_by && files_under_way() == 0)) {
        finish_shot(shot_->lost_by);
    }
}

void Brain::on(const RunSwept& answer) {
    sweeps_ -= sweeps_ > 0 ? 1 : 0;
    show(answer.pictures);
    for (const Problem& problem : answer.problems) {
        mention(problem);
    }
}

void Brain::show(const std::vector<Picture>& pictures) {
    for (const Picture& picture : pictures) {
        do_now(PictureCame{picture});
    }
}

}  // namespace host::brain
