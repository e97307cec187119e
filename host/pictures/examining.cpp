// Files, from what a worker has reported to their place.
#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <utility>

#include "host/pictures/disk/regular_file.h"
#include "host/pictures/folder.h"
#include "host/pictures/naming/stems.h"
#include "host/pictures/placing.h"
#include "host/pictures/store.h"
#include "host/pictures/whole/whole.h"

namespace host::pictures {
namespace {

struct Looked {
    FileFacts file;
    bool whole = false;
    std::string why;
};

// Nothing when it is not there any more. A file that is written to meanwhile is not whole yet.
std::optional<Looked> look_through(const Run& run, const std::string& name) {
    int error = 0;
    const Descriptor file = open_regular(run.staging.number(), name.c_str(), O_RDONLY, error);
    struct stat before {};
    struct stat after {};
    if (::fstatat(run.staging.number(), name.c_str(), &before, AT_SYMLINK_NOFOLLOW) != 0) {
        return std::nullopt;
    }
    if (error == 0 && ::fstat(file.number(), &before) != 0) {
        error = errno;
    }
    if (error != 0) {
        return Looked{facts_of(before), false, "it cannot be read: " + in_words(error)};
    }
    Looked looked{facts_of(before), false, {}};
    looked.why = why_not_whole(file.number(), looked.file.bytes, name);
    if (::fstat(file.number(), &after) != 0 || facts_of(after) != looked.file) {
        looked.why = "it is still being written";
    }
    looked.whole = looked.why.empty();
    return looked;
}

// It may have grown, or have another number if the file system keeps none.
bool is_still(const FileFacts& file, const struct stat& now) {
    const FileFacts facts = facts_of(now);
    return file.identity == facts.identity ||
           (file.bytes == facts.bytes && file.changed == facts.changed);
}

Problem not_there(const Run& run, const std::string& name) {
    return {Code::picture_not_there,
            "A picture that was reported is not there any more: " +
                path_now(run.staging.number(), run.staging_path()) + "/" + name,
            {},
            {}};
}

}  // namespace

// The run whose staging folder this is, be it under another path: the one that was named, or one
// that its worker was moved from.
std::shared_ptr<Run> Store::run_of_staging(const std::string& run,
                                           const std::string& folder) const {
    struct stat facts {};
    const auto found = runs_.find(run);
    if (found == runs_.end()) {
        return nullptr;
    }
    if (::stat(folder.c_str(), &facts) != 0) {
        // A staging folder that is gone holds no file, and one that was moved is still at hand.
        return folder == found->second->staging_path() + "/" ? found->second : nullptr;
    }
    for (std::shared_ptr<Run> one = found->second; one != nullptr; one = one->moved_from) {
        if (one->identity == identity_of(facts)) {
            return one;
        }
    }
    return nullptr;
}

Examined Store::examine(const Examine& work) {
    Examined answer;
    answer.ticket = work.ticket;
    const std::size_t slash = work.path.rfind('/');
    const std::string name = work.path.substr(slash == std::string::npos ? 0 : slash + 1);
    answer.camera_name = name;
    answer.stem = stem_of(name);
    answer.format = format_of(name);
    answer.kind = kind_of(answer.format);
    answer.verdict = Verdict::outside;
    if (slash == std::string::npos || work.path[0] != '/' ||
        work.path.find('\0') != std::string::npos) {
        return answer;
    }
    const std::shared_ptr<Run> run = run_of_staging(work.run, work.path.substr(0, slash + 1));
    if (run == nullptr) {
        return answer;
    }
    answer.room = run->folder->room();
    struct stat facts {};
    if (name.empty() || name[0] == '.') {
        answer.verdict = Verdict::not_a_file;
        return answer;
    }
    if (::fstatat(run->staging.number(), name.c_str(), &facts, AT_SYMLINK_NOFOLLOW) != 0) {
        answer.verdict = run->was_placed(name) ? Verdict::reported_before : Verdict::not_there;
        return answer;
    }
    if (!S_ISREG(facts.st_mode)) {
        answer.verdict = Verdict::not_a_file;
        return answer;
    }
    const bool known = std::any_of(pending_.begin(), pending_.end(), [&](const auto& one) {
        const Pending& pending = one.second;
        return pending.run == run && is_still(pending.file, facts) &&
               fold_case(pending.name) == fold_case(name);
    });
    if (known) {
        answer.verdict = Verdict::reported_before;
        return answer;
    }
    const auto looked = look_through(*run, name);
    if (!looked) {
        answer.verdict = Verdict::not_there;
        return answer;
    }
    answer.verdict = Verdict::there;
    answer.bytes = looked->file.bytes;
    answer.whole = looked->whole;
    answer.why = looked->why;
    pending_.emplace(work.ticket, Pending{run, name, looked->file, looked->whole});
    return answer;
}

FileAnswer Store::place_examined(const Place& work) {
    auto examined = pending_.extract(work.ticket);
    if (!examined) {
        return NotPlaced{work.ticket,
                         {Code::picture_not_there,
                          "A picture is not where it was examined any more.",
                          {},
                          work.shot}};
    }
    Pending& pending = examined.mapped();
    Run& run = *pending.run;
    struct stat facts {};
    if (::fstatat(run.staging.number(), pending.name.c_str(), &facts, AT_SYMLINK_NOFOLLOW) != 0 ||
        !S_ISREG(facts.st_mode) || !is_still(pending.file, facts)) {
        return NotPlaced{work.ticket, not_there(run, pending.name)};
    }
    if (facts_of(facts) != pending.file) {
        if (const auto again = look_through(run, pending.name)) {
            pending.file = again->file;
            pending.whole = again->whole;
        }
    }
    ToPlace file;
    file.staging = run.staging.number();
    file.run = run.name;
    file.name = pending.name;
    file.file = pending.file;
    file.name_template = work.name;
    Picture& picture = file.picture;
    picture.shot = work.shot;
    picture.tag = work.tag;
    picture.pair = work.pair;
    picture.format = format_of(pending.name);
    picture.kind = kind_of(picture.format);
    picture.camera_name = pending.name;
    picture.whole = pending.whole;
    picture.after = work.after;
    run.folder->last_shot = std::max(run.folder->last_shot, work.shot.value_or(0));
    auto outcome = place(*run.folder, file, now());
    if (auto* const problem = std::get_if<Problem>(&outcome)) {
        return NotPlaced{work.ticket, std::move(*problem)};
    }
    run.remember_placed(pending.name);
    return Placed{work.ticket, std::get<Picture>(std::move(outcome))};
}

}  // namespace host::pictures
