// A folder of its own for each test, and a store that works on it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/pictures/store.h"
#include "tests/host/pictures/sample_files.h"
#include "tests/temporary_folder.h"

namespace fs = std::filesystem;

inline void write_file(const fs::path& path, const std::string& content) {
    std::ofstream(path, std::ios::binary) << content;
}

inline std::string read_file(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// In memory where the system has such a disk: for tests with thousands of folders.
fs::path quick_disk();

// Every regular file below, by its path from there, but for what is in .incoming.
std::map<std::string, std::string> files_in(const fs::path& folder);

struct OpenedRun {
    std::string name;
    fs::path staging;
    int lock = -1;
};

// A store on FOLDER, and what is asked of it all the time. Nobody is waited for unless a test asks
// for it.
class Desk {
  public:
    explicit Desk(fs::path folder);
    Desk(fs::path folder, const host::pictures::Options& options);

    host::pictures::Store& store() {
        return store_;
    }
    const fs::path& folder() const {
        return folder_;
    }

    template <typename Answer>
    Answer ask(const host::FileWork& work) {
        const auto answer = store_.work(work);
        if (!answer || !std::holds_alternative<Answer>(*answer)) {
            ADD_FAILURE() << "another answer";
            return {};
        }
        const auto ticket = [](const auto& one) -> host::Ticket {
            if constexpr (requires { one.ticket; }) {
                return one.ticket;
            }
            return 0;
        };
        EXPECT_EQ(std::visit(ticket, *answer), std::visit(ticket, work));
        return std::get<Answer>(*answer);
    }

    host::FolderOpened open();
    host::FolderNotOpened fail_to_open(const std::string& folder);
    OpenedRun open_run(const std::string& moved_from = "");
    host::Examined examine(const OpenedRun& run, const std::string& name);
    host::Picture place(const host::Examined& examined, const host::Place& how = {});
    // From the staging folder to its place.
    host::Picture bring(const OpenedRun& run, const std::string& name, const std::string& content,
                        const host::Place& how = {});
    host::RunSwept sweep(const OpenedRun& run, bool over = true);
    void tell(const host::Picture& picture);

    host::Ticket next_ticket() {
        return ++ticket_;
    }

  private:
    fs::path folder_;
    host::pictures::Store store_;
    host::Ticket ticket_ = 0;
};

// Waits for nobody.
host::pictures::Options impatient();

// A folder that is open, with a run in it.
class OpenDesk : public testing::Test {
  protected:
    OpenDesk() : desk_(std::make_unique<Desk>(folder_.path())) {
        desk_->open();
        run_ = desk_->open_run();
    }
    // Another program, after this one has gone without a word.
    host::FolderOpened restart() {
        desk_ = nullptr;
        desk_ = std::make_unique<Desk>(folder_.path());
        return desk_->open();
    }
    fs::path lock() const {
        return run_.staging.string() + ".lock";
    }

    TemporaryFolder folder_;
    std::unique_ptr<Desk> desk_;
    OpenedRun run_;
};

// Names from a folder, as FOLDER has them.
std::set<std::string> names_of(const std::vector<host::Picture>& pictures, const fs::path& folder);

// The text of a problem with this code; empty when there is none.
std::string text_of(const std::vector<host::Problem>& problems, host::Code code);
