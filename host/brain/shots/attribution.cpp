// Whose file is it? It is a shot's only when nothing speaks against it; in doubt it is nobody's.
#include <algorithm>
#include <utility>

#include "host/brain/brain.h"

namespace host::brain {

void Brain::attribute(Ticket ticket, Report& report) {
    const Examined& file = report.file;
    // It could not be placed when it was reported before, and is whose it was then.
    if (const auto before = not_placed_.extract(key_of(report))) {
        return place(ticket, report, before.mapped());
    }
    if (place_with_other_half(ticket, report) || doubt_with_other_half(report)) {
        return;
    }
    const bool of_a_shot = shot_ && report.window == shot_->shot.number;
    // One that came behind a loss speaks too.
    if (shot_ && !of_a_shot && file.kind != Kind::other &&
        is_newer(file.stem, shot_->doubted_stem)) {
        reject_doubted();
    }
    if (file.kind == Kind::other || !of_a_shot || report.heard < shot_->fired + times_.too_soon ||
        !shot_->stem.empty()) {
        return leave_unasked(ticket, report);
    }
    // One that is older than a picture that came already is a late one of a shot in between.
    if (report.heard < late_until_ && is_newer(last_stem_, file.stem)) {
        return leave_unasked(ticket, report);
    }
    if (after_empty_shot_) {
        return doubt(ticket, report);
    }
    accept(ticket, report);
}

bool Brain::place_with_other_half(Ticket ticket, Report& report) {
    // A camera whose counter was set back gives an old name to a new picture.
    const bool in_hand = shot_ && same_stem(shot_->stem, report.file.stem);
    const Time since = in_hand ? shot_->fired : report.heard - times_.late;
    Stem* known = stems_.partner(report.file.stem, report.file.kind, report.session, since);
    if (known == nullptr) {
        return false;
    }
    (report.file.kind == Kind::raw ? known->raw : known->developed) = true;
    if (shot_ && known->shot == shot_->shot.number) {
        shot_->from = std::max(shot_->from, report.heard);
    }
    place(ticket, report, *known);
    return true;
}

void Brain::accept(Ticket ticket, Report& report) {
    shot_->stem = report.file.stem;
    shot_->from = std::max(shot_->from, report.heard);
    last_stem_ = report.file.stem;
    Stem stem;
    stem.shot = shot_->shot.number;
    stem.tag = shot_->shot.tag;
    stem.name = shot_->name;
    stem.fired = shot_->fired;
    // A RAW when JPEGs were asked for says that somebody has turned the dial before the shot.
    const Kind asked = shot_->type == FileType::jpeg ? Kind::developed : Kind::raw;
    stem.may_be_pair = !shot_->type || shot_->type == FileType::both || report.file.kind != asked;
    name_pair(ticket, report, std::move(stem));
}

void Brain::leave_unasked(Ticket ticket, Report& report) {
    Stem stem;
    stem.name = name_;
    name_pair(ticket, report, std::move(stem));
}

// The first of what may become a pair gives it its name.
void Brain::name_pair(Ticket ticket, Report& report, Stem stem) {
    stem.text = report.file.stem;
    stem.pair = report.run + "-" + std::to_string(ticket);
    stem.heard = report.heard;
    stem.session = report.session;
    stem.raw = report.file.kind == Kind::raw;
    stem.developed = report.file.kind == Kind::developed;
    place(ticket, report, stem);
    if (report.file.kind != Kind::other) {
        stems_.remember(std::move(stem));
    }
}

// After a shot without files, the first file may be a late one of that shot: then this shot's own
// comes soon, under a newer name.
void Brain::doubt(Ticket ticket, Report& report) {
    if (!shot_->doubted_stem.empty() && !same_stem(report.file.stem, shot_->doubted_stem)) {
        if (!is_newer(report.file.stem, shot_->doubted_stem)) {
            return leave_unasked(ticket, report);
        }
        reject_doubted();
    }
    if (shot_->doubted_stem.empty()) {
        shot_->doubted_stem = report.file.stem;
        shot_->doubted_until = report.heard + times_.doubt;
    }
    report.doubted = true;
}

// Whatever comes of one half comes of the other, also of one that came behind a loss.
bool Brain::doubt_with_other_half(Report& report) {
    const auto is_other_half = [&](const auto& entry) {
        return entry.second.doubted && entry.second.session == report.session &&
               entry.second.file.kind != report.file.kind;
    };
    if (!shot_ || report.file.kind == Kind::other ||
        !same_stem(report.file.stem, shot_->doubted_stem) ||
        std::none_of(reports_.begin(), reports_.end(), is_other_half)) {
        return false;
    }
    report.window = shot_->shot.number;
    report.doubted = true;
    return true;
}

template <typename Settle>
void Brain::settle_doubted(Settle settle) {
    shot_->doubted_stem.clear();
    shot_->doubted_until = never;
    for (auto& [ticket, report] : reports_) {
        if (report.doubted) {
            settle(ticket, report);
        }
    }
}

void Brain::believe_doubted() {
    settle_doubted([this](Ticket ticket, Report& report) {
        if (shot_->stem.empty()) {
            accept(ticket, report);
        } else {
            attribute(ticket, report);
        }
    });
}

void Brain::reject_doubted() {
    settle_doubted([this](Ticket ticket, Report& report) {
        if (!place_with_other_half(ticket, report)) {
            leave_unasked(ticket, report);
        }
    });
}

}  // namespace host::brain
