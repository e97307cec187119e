#include "simulator/camera/transfer.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <deque>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include "simulator/camera/develop.h"
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
    std::string stem;  // of the files' names
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

std::string stem_of(const Shot& shot) SIM_REQUIRES(g_lock) {
    Session& session = state().session;
    unsigned number = shot.number;
    if (session.number >= 0) {
        number = static_cast<unsigned>(session.number++);
    }
    char digits[16];
    std::snprintf(digits, sizeof digits, "%05u", number);
    return (session.prefix.empty() ? "DSC" : session.prefix) + digits;
}

bool given_up(const Transfer& transfer) SIM_REQUIRES(g_lock) {
    return g_line.ending || state().session.round != transfer.session_round;
}

// Keeps the line busy for as long as the bytes take, unless the session ends before.
void let_bytes_pass(Hold& hold, const Transfer& transfer, Clock::time_point start, off_t bytes,
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

// Whether the file is at the computer, under its name, and reported.
bool send_file(Hold& hold, const Transfer& transfer, PictureKind kind) SIM_REQUIRES(g_lock) {
    const Response fault = take_fault("file");
    const std::string name = transfer.stem + ending(kind);
    const std::string path = transfer.folder + "/" + name;
    // Out of the host's sight until it is whole.
    const std::string partial = transfer.folder + "/." + name + ".part";
    const Clock::time_point start = Clock::now();
    int error = 0;
    struct stat made {};
    hold.without([&] {
        error = make_picture(transfer.picture, kind, partial);
        if (error == 0 && fault.truncated && stat(partial.c_str(), &made) == 0) {
            error = truncate(partial.c_str(), made.st_size / 2) == 0 ? 0 : errno;
        }
        if (error == 0 && stat(partial.c_str(), &made) != 0) {
            error = errno;
        }
    });
    if (error == 0) {
        let_bytes_pass(hold, transfer, start, made.st_size, fault.late);
    }
    if (given_up(transfer)) {
        unlink(partial.c_str());
        return false;
    }
    if (error == 0 && !fault.missing && std::rename(partial.c_str(), path.c_str()) != 0) {
        error = errno;
    }
    if (error != 0 || fault.missing) {
        unlink(partial.c_str());
    }
    const DeliveringThread from(transfer.shot.delivering_thread);
    if (error != 0) {
        // ENOTSUP: where the pictures come from has said what it lacks.
        if (error != ENOTSUP) {
            tell(path + " was not written: " + std::strerror(error));
        }
        callback::warning(warning::file_not_sent);
        return false;
    }
    report(fault, fault.absolute ? path : name);
    return true;
}

void send_files() {
    Hold hold;
    while (!g_line.ending) {
        if (g_line.queue.empty()) {
            hold.wait(g_line.queued);
            continue;
        }
        const Transfer transfer = std::move(g_line.queue.front());
        g_line.queue.pop_front();
        bool all_sent = true;
        for (const PictureKind kind : transfer.kinds) {
            all_sent = !given_up(transfer) && send_file(hold, transfer, kind) && all_sent;
        }
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
    g_line.queue.push_back(
        {shot, picture,
         files_after_faults(files_of(shot.type, from.value(property::pair_transfer))),
         state().session.folder, stem_of(shot), state().session.round});
    if (!g_line.thread.joinable()) {
        g_line.thread = start_thread(send_files);
    }
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
