// The folders: what lies in them, in the staging folders below them and in their ledgers, and the
// one thread that does what the brain asks for. It outlives every brain.
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "host/values/file_work.h"
#include "tests/host/afternoons/agenda.h"
#include "tests/host/afternoons/model/camera.h"

namespace afternoons {

// What the disk's thread needs of the processes around it.
class Processes {
  public:
    virtual ~Processes() = default;
    virtual void answer(const host::FileAnswer& answer) = 0;
    virtual bool holds_lock(const std::string& run) const = 0;
    virtual bool is_written_to(const std::string& staging) const = 0;
    virtual void terminate(const std::string& run) = 0;
    virtual void kill(const std::string& run) = 0;
    virtual void wrong(const std::string& guarantee, const std::string& text) = 0;
};

class Disk {
  public:
    Disk(Agenda& agenda, Processes& processes) : agenda_(agenda), processes_(processes) {}

    void ask(const host::FileWork& work);
    // The brain's process is gone, and with it what it had asked for.
    void forget_work();

    File* land(const Press& press, const std::string& name, host::Kind kind, bool whole,
               const std::string& staging);
    bool taken(const std::string& staging, const std::string& stem) const;

    struct Entry {
        host::Picture picture;
        Number file = 0;
        bool told = false;
    };
    struct Run {
        std::string name;
        std::string folder;
        std::map<std::string, Number> staged;
        std::map<std::string, Number> placed_from;
        std::set<Number> examined;
        std::string moved_from;
        bool gone = false;
        std::uint64_t generation = 0;
    };
    struct Folder {
        std::vector<Entry> ledger;
        bool open = false;
    };

    std::string staging_of(const std::string& run) const;
    const Run* run_at(const std::string& staging) const;
    const Entry* entry_of(Number file) const;
    const Entry* entry_with(const std::string& id) const;
    // The file that lies at a path in a staging folder.
    File* file_at(const std::string& path);
    bool is_held(const std::string& run) const {
        return processes_.holds_lock(run);
    }

    std::map<std::string, Folder> folders;
    std::map<std::string, Run> runs;
    std::deque<File> files;
    std::uint64_t generation = 1;  // of brains
    bool stuck = false;
    bool full = false;
    bool read_only = false;
    bool gone = false;
    Time delay = milliseconds(1);
    std::uint64_t room = std::uint64_t{100} << 30;

  private:
    void work_on();
    void carry_out(const host::FileWork& work);
    void finished();
    void open_folder(const host::OpenFolder& work, Time waited);
    void open_run(const host::OpenRun& work);
    void sweep(const host::SweepRun& work);
    void examine(const host::Examine& work);
    void place(const host::Place& work);
    void look(const host::LookAtFolder& work);
    bool can_place(const std::string& folder) const;
    std::vector<host::Picture> bring_in(Run& run);
    host::Picture record(Run& run, const std::string& name, Number file, host::Picture picture);
    void forget_dead_runs(const std::string& folder, host::FolderOpened& answer);

    struct Examination {
        std::string run;
        std::string name;
        Number file = 0;
        bool placed = false;
    };

    Agenda& agenda_;
    Processes& processes_;
    std::deque<host::FileWork> work_;
    bool working_ = false;
    std::map<host::Ticket, Examination> examinations_;
    unsigned int runs_ = 0;
    std::uint64_t last_ticket_ = 0;
    std::uint64_t pictures_ = 0;
};

}  // namespace afternoons
