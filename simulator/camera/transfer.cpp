#include "simulator/camera/transfer.h"

#include <cerrno>
#include <cstring>
#include <deque>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "simulator/camera/develop.h"
#include "simulator/camera/landing/landing.h"
#include "simulator/camera/state.h"
#include "simulator/sdk/delivery.h"
#include "simulator/sdk/faults.h"
#include "simulator/sdk/strictness.h"
#include "simulator/sdk/threads.h"

namespace camera_sim {
namespace {

// The second argument of the report, when a file is there whole.
constexpr CrInt32u whole_file = 0xFFFFFFFF;

struct Transfer {
    Shot shot;
    Picture picture;
    std::vector<PictureKind> kinds;  // the files, in order
    std::string folder;
    std::string prefix;              // of the files' names
    std::optional<unsigned> number;  // that the host has asked for; none: the camera's counter
    unsigned session_round;
};

struct Line {
    std::deque<Transfer> queue;
    std::condition_variable queued;
    std::thread thread;
    bool ending = false;
};

// Never destroyed: its thread may outlive main.
Line& g_line SIM_ANNOTATION(guarded_by(g_lock)) = *new Line;

std::vector<PictureKind> files_of(CrInt64u type, CrInt64u pair) {
    switch (type) {
        case file_type::raw:
            return {PictureKind::raw};
        case file_type::raw_and_jpeg:
        case file_type::raw_and_heif: {
            const bool jpeg = type == file_type::raw_and_jpeg;
            const PictureKind developed = jpeg ? PictureKind::jpeg : PictureKind::heif;
            if (pair == (jpeg ? pair::both_of_jpeg : pair::both_of_heif)) {
                return {PictureKind::raw, developed};
            }
            return {pair == pair::raw_half ? PictureKind::raw : developed};
        }
        default:
            return {PictureKind::jpeg};
    }
}

std::vector<PictureKind> files_after_faults(std::vector<PictureKind> files) SIM_REQUIRES(g_lock) {
    if (files.size() == 2) {
        const Response fault = take_fault("pair");
        if (fault.reversed) {
            std::swap(files[0], files[1]);
        }
        if (fault.half) {
            files.pop_back();
        }
    }
    return files;
}

bool given_up(const Transfer& transfer) SIM_REQUIRES(g_lock) {
    return g_line.ending || state().session.round != transfer.session_round;
}

// Keeps the line busy for as long as the bytes take, unless the session ends before.
void let_bytes_pass(Hold& hold, const Transfer& transfer, Clock::time_point start, long long bytes,
                    Duration late) SIM_REQUIRES(g_lock) {
    const std::uint64_t rate = state().setup.usb_rate;
    const double seconds = rate == 0 ? 0 : static_cast<double>(bytes) / static_cast<double>(rate);
    const auto end =
        start + late + std::chrono::duration_cast<Duration>(std::chrono::duration<double>(seconds));
    while (!given_up(transfer) && Clock::now() < end) {
        hold.wait_until(g_line.queued, end);
    }
}

void report(const Response& fault, const std::string& name) SIM_REQUIRES(g_lock) {
    for (int time = 0; time < (fault.twice ? 2 : 1); ++time) {
        callback::download(fault.named.value_or(name), fault.number.value_or(whole_file));
    }
}

// The number to land with, and whether the highest in the folder has to be passed first: a counter
// that nobody has named counts on from there, and looks once.
struct Wanted {
    unsigned number;
    bool beyond_all;
};

std::string counted_folder(const Transfer& transfer) {
    return transfer.folder + "/" + transfer.prefix;
}

Wanted wanted_number(const Transfer& transfer) SIM_REQUIRES(g_lock) {
    const Shot& shot = transfer.shot;
    if (transfer.number) {
        return {*transfer.number, false};
    }
    // Shots that were taken before the counter found names in its way go on behind it.
    const unsigned passed =
        shot.counter_named == body().counter_named ? body().passed - shot.passed : 0;
    return {(shot.number - 1 + passed) % last_number + 1,
            body().counter_named == 0 && state().shooting.counted_in != counted_folder(transfer)};
}

// The shot has got that number, perhaps not the one that it wanted.
void count_on(const Transfer& transfer, unsigned number) SIM_REQUIRES(g_lock) {
    if (!transfer.number) {
        const unsigned wanted = wanted_number(transfer).number;
        body().pass_numbers((number + last_number - wanted) % last_number,
                            transfer.shot.counter_named);
        state().shooting.counted_in = counted_folder(transfer);
    }
}

void tell_not_written(const std::string& path, bool numbered, int error) {
    // ENOTSUP: where the pictures come from has said what is wrong.
    if (error != ENOTSUP) {
        const char* why = error != EEXIST ? std::strerror(error)
                          : numbered      ? "there is a file of that name"
                                          : "every number is taken";
        tell(path + " was not written: " + why);
    }
}

// The file under its hidden name; 0 or an errno value. Gives the lock up meanwhile.
int make_file(Hold& hold, Transfer& transfer, Landing& landing, PictureKind kind,
              const Wanted& wanted, bool truncated) SIM_REQUIRES(g_lock) {
    const bool numbered = landing.reserved();
    int error = 0;
    hold.without([&] {
        error = numbered ? 0 : landing.reserve(wanted.number, wanted.beyond_all);
        if (error == 0 && !transfer.number) {
            transfer.picture.number = landing.number();
        }
        const auto making = [&](const std::string& path) {
            return make_picture(transfer.picture, kind, path);
        };
        error = error != 0 ? error : landing.make(ending(kind), making);
        error = error == 0 && truncated ? landing.halve() : error;
    });
    if (!numbered && landing.reserved()) {
        count_on(transfer, landing.number());
    }
    return error;
}

// Whether the file is at the computer, under its name, and reported.
bool send_file(Hold& hold, Transfer& transfer, Landing& landing, std::size_t index)
    SIM_REQUIRES(g_lock) {
    const PictureKind kind = transfer.kinds[index];
    const Response fault = take_fault("file");
    const Clock::time_point start = Clock::now();
    Wanted wanted = wanted_number(transfer);
    int error = 0;
    for (unsigned moved = 0;; ++moved) {
        error = make_file(hold, transfer, landing, kind, wanted, fault.truncated);
        if (error == 0) {
            let_bytes_pass(hold, transfer, start, landing.bytes(), fault.late);
        }
        if (given_up(transfer)) {
            return false;
        }
        if (error == 0 && !fault.missing) {
            error = landing.publish();
        }
        // Another program made a file of the name meanwhile. The second of a pair has no choice.
        if (error != EEXIST || !landing.reserved() || index > 0 || moved == last_number) {
            break;
        }
        wanted = {number_after(landing.number()), false};
        landing.let_go();
    }
    const bool numbered = landing.reserved();
    const std::string path =
        landing.path(numbered ? landing.number() : wanted.number, ending(kind));
    landing.discard();
    const DeliveringThread from(transfer.shot.delivering_thread);
    if (error != 0) {
        tell_not_written(path, numbered, error);
        callback::warning(warning::file_not_sent);
        return false;
    }
    report(fault, fault.absolute ? path : path.substr(transfer.folder.size() + 1));
    return true;
}

void send_files() {
    Hold hold;
    while (!g_line.ending) {
        if (g_line.queue.empty()) {
            hold.wait(g_line.queued);
            continue;
        }
        Transfer transfer = std::move(g_line.queue.front());
        g_line.queue.pop_front();
        Landing landing(transfer.folder, transfer.prefix);
        bool all_sent = true;
        for (std::size_t file = 0; file < transfer.kinds.size(); ++file) {
            all_sent = !given_up(transfer) && send_file(hold, transfer, landing, file) && all_sent;
        }
        // With the lock still held from the last report, so that whoever hears of the file finds
        // the folder in its final state.
        landing.let_go();
        finish(transfer.shot, !all_sent);
    }
}

}  // namespace

void send_to_computer(const Shot& shot) {
    if (state().ending) {
        finish(shot, true);
        return;
    }
    const Body& from = body();
    const Setup& setup = state().setup;
    const Picture picture{from.model.value_or("unknown"),
                          from.serial,
                          shot.number,
                          shot.taken,
                          shot.time_seconds,
                          setup.width,
                          setup.height,
                          setup.seed,
                          state().own_pictures};
    Session& session = state().session;
    std::optional<unsigned> number;
    if (session.number >= 0) {
        number = static_cast<unsigned>(session.number++);
    }
    g_line.queue.push_back(
        {shot, picture,
         files_after_faults(files_of(shot.type, from.value(property::pair_transfer))),
         session.folder, session.prefix.empty() ? "DSC" : session.prefix, number, session.round});
    if (!g_line.thread.joinable()) {
        g_line.thread = start_thread(send_files);
    }
    g_line.queued.notify_one();
}

void look_at_session_again() {
    g_line.queued.notify_one();
}

void end_transfer(Hold& hold) {
    g_line.ending = true;
    g_line.queued.notify_one();
    std::thread thread = std::exchange(g_line.thread, {});
    if (thread.joinable()) {
        hold.without([&thread] { thread.join(); });
    }
    g_line.queue.clear();
    g_line.ending = false;
}

}  // namespace camera_sim
