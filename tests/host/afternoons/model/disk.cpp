#include "tests/host/afternoons/model/disk.h"

#include <algorithm>
#include <utility>

namespace afternoons {

using host::Code;
using host::Problem;
using host::Verdict;

namespace {

constexpr std::uint64_t file_size = 1000;

std::string ending_of(const std::string& name) {
    const std::size_t dot = name.find_last_of('.');
    return dot == std::string::npos ? "" : name.substr(dot + 1);
}

host::Kind kind_of(const std::string& name) {
    const std::string ending = ending_of(name);
    return ending == "ARW" || ending == "DNG"   ? host::Kind::raw
           : ending == "JPG" || ending == "HIF" ? host::Kind::developed
                                                : host::Kind::other;
}

host::Format format_of(const std::string& name) {
    const std::string ending = ending_of(name);
    return ending == "ARW"   ? host::Format::arw
           : ending == "DNG" ? host::Format::dng
           : ending == "JPG" ? host::Format::jpeg
           : ending == "HIF" ? host::Format::heif
                             : host::Format::other;
}

std::string absolute(const std::string& folder) {
    return folder.starts_with("/") ? folder : "/" + folder;
}

}  // namespace

void Disk::ask(const host::FileWork& work) {
    work_.push_back(work);
    if (!working_) {
        working_ = true;
        work_on();
    }
}

void Disk::forget_work() {
    work_.clear();
    working_ = false;
    ++generation;
    examinations_.clear();
    last_ticket_ = 0;
    for (auto& [path, folder] : folders) {
        folder.open = false;
    }
    for (auto& [name, run] : runs) {
        run.examined.clear();
    }
}

void Disk::work_on() {
    agenda_.after(delay, [this, of = generation] {
        if (of != generation) {
            return;
        }
        if (stuck) {
            return agenda_.after(milliseconds(50), [this, of] {
                if (of == generation) {
                    work_on();
                }
            });
        }
        carry_out(work_.front());
    });
}

void Disk::finished() {
    work_.pop_front();
    working_ = !work_.empty();
    if (working_) {
        work_on();
    }
}

void Disk::carry_out(const host::FileWork& work) {
    if (const auto* open = std::get_if<host::OpenFolder>(&work)) {
        return open_folder(*open, {});
    }
    if (const auto* close = std::get_if<host::CloseFolder>(&work)) {
        folders[close->folder].open = false;
    } else if (const auto* run = std::get_if<host::OpenRun>(&work)) {
        open_run(*run);
    } else if (const auto* one = std::get_if<host::SweepRun>(&work)) {
        sweep(*one);
    } else if (const auto* file = std::get_if<host::Examine>(&work)) {
        examine(*file);
    } else if (const auto* where = std::get_if<host::Place>(&work)) {
        place(*where);
    } else if (const auto* told = std::get_if<host::Told>(&work)) {
        for (auto& [path, folder] : folders) {
            for (Entry& entry : folder.ledger) {
                entry.told = entry.told || entry.picture.id == told->id;
            }
        }
    } else if (const auto* at = std::get_if<host::LookAtFolder>(&work)) {
        look(*at);
    }
    finished();
}

// A worker that outlived its brain is given 4 s, then it is ended.
void Disk::open_folder(const host::OpenFolder& work, Time waited) {
    const std::string path = absolute(work.folder);
    const auto refuse = [&](Code code, const std::string& text) {
        processes_.answer(host::FolderNotOpened{work.ticket, {code, text, {}, {}}});
        finished();
    };
    if (gone || path.starts_with("/none")) {
        return refuse(Code::folder_gone, path + " is not there.");
    }
    if (read_only || path.starts_with("/forbidden")) {
        return refuse(Code::folder_not_permitted, path + " cannot be written to.");
    }
    if (path.starts_with("/used")) {
        return refuse(Code::folder_in_use, path + " is used by another program.");
    }
    bool held = false;
    if (!folders[path].open) {
        for (auto& [name, run] : runs) {
            if (run.folder != path || run.gone || !processes_.holds_lock(name)) {
                continue;
            }
            held = true;
            if (waited == seconds(4)) {
                processes_.terminate(name);
            } else if (waited == seconds(8)) {
                processes_.kill(name);
            }
        }
    }
    if (held && waited < seconds(10)) {
        return agenda_.after(milliseconds(500), [this, work, waited, of = generation] {
            if (of == generation) {
                open_folder(work, waited + milliseconds(500));
            }
        });
    }
    host::FolderOpened answer;
    answer.ticket = work.ticket;
    answer.folder = path;
    answer.room = room;
    Folder& folder = folders[path];
    if (!std::exchange(folder.open, true)) {
        for (const Entry& entry : folder.ledger) {
            if (!entry.told) {
                answer.pictures.push_back(entry.picture);
            }
        }
        forget_dead_runs(path, answer);
    }
    for (const Entry& entry : folder.ledger) {
        answer.last_shot = std::max(answer.last_shot, entry.picture.shot.value_or(0));
    }
    processes_.answer(answer);
    finished();
}

void Disk::forget_dead_runs(const std::string& folder, host::FolderOpened& answer) {
    for (auto& [name, run] : runs) {
        if (run.folder != folder || run.gone || run.generation == generation) {
            continue;
        }
        if (processes_.holds_lock(name)) {
            answer.problems.push_back(
                {Code::folder_in_use, "The worker of " + name + " cannot be ended.", {}, {}});
            continue;
        }
        for (host::Picture& picture : bring_in(run)) {
            answer.pictures.push_back(std::move(picture));
        }
        run.gone = run.staged.empty();
    }
}

void Disk::open_run(const host::OpenRun& work) {
    if (!folders[work.folder].open) {
        processes_.wrong("G2", "a staging folder is asked for in a folder that is not open");
    }
    if (gone || read_only || full) {
        return processes_.answer(host::RunNotOpened{
            work.ticket, {Code::folder_not_taken, "No staging folder can be made.", {}, {}}});
    }
    Run run;
    run.name = "run-" + std::to_string(++runs_);
    run.folder = work.folder;
    run.moved_from = work.moved_from;
    run.generation = generation;
    runs[run.name] = run;
    processes_.answer(host::RunOpened{work.ticket, run.name, staging_of(run.name), 7});
}

std::string Disk::staging_of(const std::string& run) const {
    return runs.at(run).folder + "/.incoming/" + run;
}

const Disk::Run* Disk::run_at(const std::string& staging) const {
    const std::size_t slash = staging.find_last_of('/');
    const auto found = runs.find(staging.substr(slash + 1));
    return found != runs.end() && staging_of(found->first) == staging ? &found->second : nullptr;
}

const Disk::Entry* Disk::entry_of(Number file) const {
    for (const auto& [path, folder] : folders) {
        for (const Entry& entry : folder.ledger) {
            if (entry.file == file) {
                return &entry;
            }
        }
    }
    return nullptr;
}

const Disk::Entry* Disk::entry_with(const std::string& id) const {
    for (const auto& [path, folder] : folders) {
        for (const Entry& entry : folder.ledger) {
            if (entry.picture.id == id) {
                return &entry;
            }
        }
    }
    return nullptr;
}

File* Disk::file_at(const std::string& path) {
    const std::size_t slash = path.find_last_of('/');
    const Run* run = slash == std::string::npos ? nullptr : run_at(path.substr(0, slash));
    if (run == nullptr) {
        return nullptr;
    }
    const auto found = run->staged.find(path.substr(slash + 1));
    return found == run->staged.end() ? nullptr : &files[found->second - 1];
}

bool Disk::can_place(const std::string&) const {
    return !gone && !full && !read_only;
}

host::Picture Disk::record(Run& run, const std::string& name, Number file, host::Picture picture) {
    picture.id = "picture-" + std::to_string(++pictures_);
    picture.kind = kind_of(name);
    picture.format = format_of(name);
    picture.path = run.folder + "/" + name + "#" + std::to_string(pictures_);
    picture.camera_name = name;
    picture.bytes = file_size;
    picture.whole = files[file - 1].whole;
    run.staged.erase(name);
    run.placed_from[name] = file;
    folders[run.folder].ledger.push_back({picture, file, false});
    return picture;
}

std::vector<host::Picture> Disk::bring_in(Run& run) {
    std::vector<host::Picture> pictures;
    if (!can_place(run.folder)) {
        return pictures;
    }
    const std::map<std::string, Number> staged = run.staged;
    for (const auto& [name, file] : staged) {
        if (run.examined.count(file) != 0) {
            continue;  // it is about to be placed
        }
        host::Picture picture;
        picture.pair = "swept-" + std::to_string(file);
        picture.recovered = true;
        pictures.push_back(record(run, name, file, picture));
    }
    return pictures;
}

void Disk::sweep(const host::SweepRun& work) {
    const auto found = runs.find(work.run);
    if (found == runs.end()) {
        processes_.wrong("G2", "a run is swept that there never was: " + work.run);
        return processes_.answer(host::RunSwept{work.ticket, {}, {}});
    }
    if (work.over && processes_.is_written_to(staging_of(work.run))) {
        processes_.wrong("G2", work.run + " is swept and removed while its worker writes there");
    }
    Run& run = found->second;
    host::RunSwept answer;
    answer.ticket = work.ticket;
    answer.pictures = bring_in(run);
    for (const auto& [name, file] : run.staged) {
        answer.problems.push_back(
            {Code::picture_not_placed, name + " stays in " + staging_of(work.run), {}, {}});
    }
    if (work.over) {
        run.examined.clear();
        run.gone = run.gone || run.staged.empty();
        std::erase_if(examinations_, [&](const auto& one) {
            return one.second.run == work.run && !one.second.placed;
        });
    }
    processes_.answer(answer);
}

void Disk::examine(const host::Examine& work) {
    host::Examined answer;
    answer.ticket = work.ticket;
    answer.room = room;
    const std::size_t slash = work.path.find_last_of('/');
    const std::string name = work.path.substr(slash + 1);
    answer.camera_name = name;
    // The run that was named, or one that its worker was moved from.
    std::string of = work.run;
    while (!of.empty() &&
           (runs.count(of) == 0 || runs[of].gone || staging_of(of) != work.path.substr(0, slash))) {
        of = runs.count(of) == 0 ? "" : runs[of].moved_from;
    }
    if (of.empty()) {
        answer.verdict = Verdict::outside;
        return processes_.answer(answer);
    }
    Run& run = runs[of];
    const auto staged = run.staged.find(name);
    if (gone || staged == run.staged.end()) {
        answer.verdict = !gone && run.placed_from.count(name) != 0 ? Verdict::reported_before
                                                                   : Verdict::not_there;
        return processes_.answer(answer);
    }
    if (name.starts_with(".")) {
        answer.verdict = Verdict::not_a_file;
        return processes_.answer(answer);
    }
    const Number file = staged->second;
    if (!run.examined.insert(file).second) {
        answer.verdict = Verdict::reported_before;
        return processes_.answer(answer);
    }
    answer.verdict = Verdict::there;
    answer.stem = name.substr(0, name.find_last_of('.'));
    answer.kind = kind_of(name);
    answer.format = format_of(name);
    answer.bytes = file_size;
    answer.whole = files[file - 1].whole;
    answer.why = answer.whole ? "" : "it ends too soon";
    examinations_[work.ticket] = {of, name, file, false};
    processes_.answer(answer);
}

void Disk::place(const host::Place& work) {
    const auto found = examinations_.find(work.ticket);
    if (found == examinations_.end() || found->second.placed) {
        processes_.wrong("G2", found == examinations_.end()
                                   ? "a file is placed that was not examined"
                                   : "a file is placed twice: " + found->second.name);
        return processes_.answer(host::NotPlaced{work.ticket, {}});
    }
    Examination& file = found->second;
    Run& run = runs.at(file.run);
    if (work.pair.empty()) {
        processes_.wrong("G2", "a picture is placed without a pair of its own");
    }
    const auto staged = run.staged.find(file.name);
    if (!can_place(run.folder) || staged == run.staged.end() || staged->second != file.file) {
        run.examined.erase(file.file);
        return processes_.answer(host::NotPlaced{
            work.ticket,
            {Code::picture_not_placed, file.name + " stays in " + staging_of(file.run), {}, {}}});
    }
    file.placed = true;
    host::Picture picture;
    picture.shot = work.shot;
    picture.tag = work.tag;
    picture.pair = work.pair;
    picture.after = work.after;
    processes_.answer(host::Placed{work.ticket, record(run, file.name, file.file, picture)});
}

void Disk::look(const host::LookAtFolder& work) {
    processes_.answer(host::FolderLooked{work.ticket, !gone, !gone, !read_only, full ? 0 : room});
}

File* Disk::land(const Press& press, const std::string& name, host::Kind kind, bool whole,
                 const std::string& staging) {
    const Run* run = run_at(staging);
    if (run == nullptr || run->gone || gone || full || read_only ||
        name.find('/') != std::string::npos || run->staged.count(name) != 0) {
        return nullptr;
    }
    File file;
    file.number = files.size() + 1;
    file.press = press.number;
    file.name = name;
    file.stem = name.substr(0, name.find_last_of('.'));
    file.kind = kind;
    file.whole = whole;
    file.run = run->name;
    files.push_back(file);
    runs[run->name].staged[name] = file.number;
    return &files.back();
}

bool Disk::taken(const std::string& staging, const std::string& stem) const {
    const Run* run = run_at(staging);
    return run != nullptr &&
           std::any_of(run->staged.begin(), run->staged.end(), [&](const auto& staged) {
               return staged.first.substr(0, staged.first.find_last_of('.')) == stem;
           });
}

}  // namespace afternoons
