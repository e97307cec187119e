// What is asked of the disk and what it answers. Asked in order, done in order, by one thread that
// may be stuck for as long as a disk is; each request gets one answer unless it says otherwise.
// Paths are bytes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "host/values/picture.h"
#include "host/values/problem.h"

namespace host {

// Given back with the answer; counts from 1 on and is never used twice.
using Ticket = std::uint64_t;

// Makes FOLDER its own: its last part made where it is missing, writable, its lock waited for up to
// 20 s, what runs of the past have left brought in. Answered by FolderOpened or FolderNotOpened.
struct OpenFolder {
    Ticket ticket = 0;
    std::string folder;
};

// The folder is no longer used: its lock is given back. No answer.
struct CloseFolder {
    std::string folder;
};

// Makes a staging folder FOLDER/.incoming/RUN with its lock, for the next worker, or for the one of
// the run `moved_from`, which goes on under another folder: that run then stays held as long as
// this one. Answered by RunOpened or RunNotOpened.
struct OpenRun {
    Ticket ticket = 0;
    std::string folder;
    std::string moved_from;  // a run, or empty
};

// The worker of the run runs under this number, which goes into its lock file; the lock's
// descriptor is closed here, so that from now on only the worker holds it. No answer.
struct RunBegun {
    std::string run;
    std::int64_t process = 0;
};

// Brings in what the run's staging folder still holds. Answered by RunSwept.
// `over`: the worker has ended, so the staging folder goes too.
struct SweepRun {
    Ticket ticket = 0;
    std::string run;
    bool over = true;
};

// Is the file of this report there, inside the run's staging folder, and what is it? Answered by
// Examined. Nothing is moved.
struct Examine {
    Ticket ticket = 0;
    std::string run;
    std::string path;  // as reported, unescaped
};

// Moves an examined file to its place. Answered by Placed or NotPlaced.
struct Place {
    Ticket ticket = 0;  // that of its Examine
    std::optional<std::uint64_t> shot;
    std::string tag;
    std::string name;  // a template; empty: "{camera}"
    std::string pair;  // pictures with the same one share a stem
    std::optional<std::chrono::milliseconds> after;
};

// A listener knows of the picture: it need not be told again after a restart. Asked for by who
// calls the listener, never by the brain. No answer.
struct Told {
    std::string id;
};

// Is the folder still the one that was opened, and has it room? Answered by FolderLooked.
struct LookAtFolder {
    Ticket ticket = 0;
    std::string folder;
};

using FileWork = std::variant<OpenFolder, CloseFolder, OpenRun, RunBegun, SweepRun, Examine, Place,
                              Told, LookAtFolder>;

struct FolderOpened {
    Ticket ticket = 0;
    std::string folder;                   // absolute, links resolved
    std::vector<Picture> pictures;        // recovered just now, or placed and never told
    std::vector<Problem> problems;        // what was left where it is, and why
    std::uint64_t last_shot = 0;          // the highest number in the ledger
    std::optional<std::uint64_t> room{};  // bytes free
};

struct FolderNotOpened {
    Ticket ticket = 0;
    Problem problem;
};

struct RunOpened {
    Ticket ticket = 0;
    std::string run;           // its name, unlike any other's
    std::string staging;       // absolute: the worker's download folder
    int lock_descriptor = -1;  // for the worker to inherit; stays the answerer's
};

struct RunNotOpened {
    Ticket ticket = 0;
    Problem problem;
};

struct RunSwept {
    Ticket ticket = 0;
    std::vector<Picture> pictures;
    std::vector<Problem> problems;
};

// there: a file of a camera. reported_before: this very file was examined or placed already.
// outside: not in the staging folder, by the folders' identity. not_a_file: a link, a folder, a
// hidden name.
enum class Verdict { there, reported_before, not_there, outside, not_a_file };

struct Examined {
    Ticket ticket = 0;
    Verdict verdict = Verdict::not_there;
    std::string camera_name{};  // with its ending
    std::string stem{};         // without; the halves of a pair have the same, whatever its case
    Kind kind = Kind::other;
    Format format = Format::other;
    std::uint64_t bytes = 0;
    bool whole = false;
    std::string why{};                    // what is wrong with it, when something is
    std::optional<std::uint64_t> room{};  // bytes free in the folder
};

struct Placed {
    Ticket ticket = 0;
    Picture picture;
};

struct NotPlaced {
    Ticket ticket = 0;
    Problem problem;  // names where the file is now
};

struct FolderLooked {
    Ticket ticket = 0;
    bool there = false;
    bool same = false;  // device and inode as when it was opened
    bool writable = false;
    std::uint64_t room = 0;  // bytes free
};

using FileAnswer = std::variant<FolderOpened, FolderNotOpened, RunOpened, RunNotOpened, RunSwept,
                                Examined, Placed, NotPlaced, FolderLooked>;

}  // namespace host
