#include "tests/host/pictures/afternoon.h"

#include <algorithm>
#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/host/pictures/disk_calls.h"

namespace {

const std::map<std::string, std::string> strangers{
    {"DSC00001.xmp", "a stranger's"}, {"DSC00002.JPG", ""}, {"2/DSC00005.JPG", ""}};

}  // namespace

bool cut_at(int step, const std::function<void()>& what) {
    const pid_t child = ::fork();
    if (child == 0) {
        int calls = 0;
        disk_calls::before = [&](std::string_view) {
            if (calls++ == step) {
                ::raise(SIGKILL);
            }
            return 0;
        };
        what();
        ::_exit(0);
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status) ? WTERMSIG(status) == SIGKILL : WEXITSTATUS(status) == 0);
    return WIFSIGNALED(status);
}

Afternoon::Afternoon(const fs::path& where)
    : folder_(where / "folder"), made_(where / "made"), told_(where / "told") {
    fs::create_directories(folder_ / "2");
    fs::create_directories(made_);
    for (const auto& [name, content] : strangers) {
        write_file(folder_ / name, content);
    }
}

void Afternoon::make(const fs::path& path, const std::string& content) const {
    // First here: who is killed in between has made one that never came, and not the other way.
    write_file(path, content);
    write_file(made_ / path.filename(), content);
}

void Afternoon::tell(Desk& desk, const host::Picture& picture) const {
    std::ofstream(told_, std::ios::app) << picture.id << " " << picture.path << "\n" << std::flush;
    desk.store().work(host::Told{picture.id});
}

void Afternoon::place(Desk& desk, const OpenedRun& run, const std::string& name,
                      const std::string& content, const host::Place& how) const {
    make(run.staging / name, content);
    const auto examined = desk.store().work(
        host::Examine{desk.next_ticket(), run.name, (run.staging / name).string()});
    host::Place work = how;
    work.ticket = std::get<host::Examined>(*examined).ticket;
    const auto answer = desk.store().work(work);
    if (const auto* const placed = std::get_if<host::Placed>(&*answer)) {
        tell(desk, placed->picture);
    } else {
        problems.push_back(std::get<host::NotPlaced>(*answer).problem);
    }
}

void Afternoon::shoot() const {
    Desk desk(folder_);
    const auto opened = desk.store().work(host::OpenFolder{1, folder_.string()});
    const auto run = desk.store().work(host::OpenRun{2, folder_.string(), ""});
    const auto* const ready = std::get_if<host::RunOpened>(&*run);
    if (!std::holds_alternative<host::FolderOpened>(*opened) || ready == nullptr) {
        return;
    }
    const OpenedRun here{ready->run, ready->staging, ready->lock_descriptor};
    place(desk, here, "DSC00001.ARW", sample_raw("1"), {0, 1, "a", "", "pair 1", {}});
    place(desk, here, "DSC00001.JPG", sample_jpeg("1"), {0, 1, "a", "", "pair 1", {}});
    place(desk, here, "DSC00002.JPG", sample_jpeg("2").substr(0, 90), {0, 2, "", "", "pair 2", {}});
    place(desk, here, "C0001.MP4", "a movie", {0, {}, "", "movies/all/{n:3}", "pair 3", {}});
    place(desk, here, "DSC00005.JPG", sample_jpeg("5"), {0, 5, "", "2/{camera}", "pair 5", {}});
    make(here.staging / "DSC00006.JPG", sample_jpeg("6"));
    const auto answer = desk.store().work(host::SweepRun{20, here.name, true});
    const auto& swept = std::get<host::RunSwept>(*answer);
    for (const host::Picture& picture : swept.pictures) {
        tell(desk, picture);
    }
    problems.insert(problems.end(), swept.problems.begin(), swept.problems.end());
}

void Afternoon::start() const {
    Desk desk(folder_);
    const auto answer = desk.store().work(host::OpenFolder{1, folder_.string()});
    if (const auto* const opened = std::get_if<host::FolderOpened>(&*answer)) {
        for (const host::Picture& picture : opened->pictures) {
            tell(desk, picture);
        }
        problems.insert(problems.end(), opened->problems.begin(), opened->problems.end());
    }
}

std::map<std::string, std::string> Afternoon::pictures_in_folder() const {
    std::map<std::string, std::string> files = files_in(folder_);
    for (const auto& [name, content] : strangers) {
        EXPECT_TRUE(files.count(name) == 1 && files[name] == content) << name;
        files.erase(name);
    }
    return files;
}

void Afternoon::check() const {
    problems.clear();
    start();
    for (const host::Problem& problem : problems) {
        EXPECT_EQ(problem.code, host::Code::picture_damaged) << problem.text;
    }
    const auto files = pictures_in_folder();
    std::multiset<std::string> placed;
    for (const auto& [name, content] : files) {
        placed.insert(content);
    }
    std::multiset<std::string> made;
    for (const auto& [name, content] : files_in(made_)) {
        made.insert(content);
    }
    // The kill may have come between the two copies of a file.
    std::vector<std::string> extra;
    std::set_difference(placed.begin(), placed.end(), made.begin(), made.end(),
                        std::back_inserter(extra));
    EXPECT_EQ(extra, std::vector<std::string>{});
    EXPECT_EQ(placed.size(), made.size());

    std::map<std::string, std::set<std::string>> ids;
    std::map<std::string, std::set<std::string>> paths;
    std::ifstream told(told_);
    std::string id;
    std::string path;
    while (told >> id >> path) {
        ids[fs::path(path).lexically_relative(folder_).string()].insert(id);
        paths[id].insert(path);
    }
    for (const auto& [name, content] : files) {
        EXPECT_EQ(ids[name].size(), 1U) << name;
    }
    for (const auto& [one, told_at] : paths) {
        EXPECT_EQ(told_at.size(), 1U) << one;
    }
    EXPECT_EQ(ids.size(), files.size());
    for (const auto& entry : fs::directory_iterator(folder_ / ".incoming")) {
        EXPECT_NE(entry.path().filename().string().rfind("run-", 0), 0U) << entry.path();
    }
}

void Afternoon::check_nothing_lost(const std::vector<host::Problem>& named) const {
    std::multiset<std::string> there;
    for (const auto& [name, content] : pictures_in_folder()) {
        // A disk that takes nothing keeps the empty file that a name was reserved by.
        if (!content.empty()) {
            there.insert(content);
        }
    }
    for (const auto& entry : fs::recursive_directory_iterator(folder_ / ".incoming")) {
        const std::string name = entry.path().filename().string();
        if (!entry.is_regular_file() || fs::relative(entry.path(), folder_ / ".incoming") == name) {
            continue;  // the lock, the ledger and the locks of runs
        }
        there.insert(read_file(entry.path()));
        const bool is_named = std::any_of(named.begin(), named.end(), [&](const auto& problem) {
            const std::string all_of_it = " in " + entry.path().parent_path().string();
            return problem.text.find(entry.path().string()) != std::string::npos ||
                   problem.text.find(all_of_it) != std::string::npos;
        });
        EXPECT_TRUE(is_named) << entry.path();
    }
    std::multiset<std::string> made;
    for (const auto& [name, content] : files_in(made_)) {
        made.insert(content);
    }
    EXPECT_EQ(there, made);
}
