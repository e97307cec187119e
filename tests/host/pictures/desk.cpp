#include "tests/host/pictures/desk.h"

#include <unistd.h>

fs::path quick_disk() {
    const fs::path memory = "/dev/shm";
    return ::access(memory.c_str(), W_OK) == 0 ? memory : fs::temp_directory_path();
}

std::map<std::string, std::string> files_in(const fs::path& folder) {
    std::map<std::string, std::string> files;
    for (auto entry = fs::recursive_directory_iterator(folder);
         entry != fs::recursive_directory_iterator(); ++entry) {
        if (entry->path().filename() == ".incoming") {
            entry.disable_recursion_pending();
        } else if (entry->is_regular_file() && !entry->is_symlink()) {
            files[entry->path().lexically_relative(folder).string()] = read_file(entry->path());
        }
    }
    return files;
}

host::pictures::Options impatient() {
    host::pictures::Options options;
    options.folder_in_use = options.before_sigterm = {};
    return options;
}

Desk::Desk(fs::path folder) : Desk(std::move(folder), impatient()) {}

Desk::Desk(fs::path folder, const host::pictures::Options& options)
    : folder_(std::move(folder)), store_(options) {}

host::FolderOpened Desk::open() {
    return ask<host::FolderOpened>(host::OpenFolder{next_ticket(), folder_.string()});
}

host::FolderNotOpened Desk::fail_to_open(const std::string& folder) {
    return ask<host::FolderNotOpened>(host::OpenFolder{next_ticket(), folder});
}

OpenedRun Desk::open_run(const std::string& moved_from) {
    const auto opened =
        ask<host::RunOpened>(host::OpenRun{next_ticket(), folder_.string(), moved_from});
    return {opened.run, opened.staging, opened.lock_descriptor};
}

host::Examined Desk::examine(const OpenedRun& run, const std::string& name) {
    return ask<host::Examined>(
        host::Examine{next_ticket(), run.name, (run.staging / name).string()});
}

host::Picture Desk::place(const host::Examined& examined, const host::Place& how) {
    host::Place work = how;
    work.ticket = examined.ticket;
    if (work.pair.empty()) {
        work.pair = "pair-" + std::to_string(examined.ticket);
    }
    const auto placed = ask<host::Placed>(work);
    EXPECT_EQ(placed.ticket, examined.ticket);
    return placed.picture;
}

host::Picture Desk::bring(const OpenedRun& run, const std::string& name, const std::string& content,
                          const host::Place& how) {
    write_file(run.staging / name, content);
    return place(examine(run, name), how);
}

host::RunSwept Desk::sweep(const OpenedRun& run, bool over) {
    return ask<host::RunSwept>(host::SweepRun{next_ticket(), run.name, over});
}

void Desk::tell(const host::Picture& picture) {
    EXPECT_EQ(store_.work(host::Told{picture.id}), std::nullopt);
}

std::set<std::string> names_of(const std::vector<host::Picture>& pictures, const fs::path& folder) {
    std::set<std::string> names;
    for (const host::Picture& picture : pictures) {
        names.insert(fs::path(picture.path).lexically_relative(folder).string());
    }
    return names;
}

std::string text_of(const std::vector<host::Problem>& problems, host::Code code) {
    for (const host::Problem& problem : problems) {
        if (problem.code == code) {
            return problem.text;
        }
    }
    return "";
}
