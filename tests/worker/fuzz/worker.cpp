// The worker's reader, main loop and callbacks on the virtual camera: any bytes from the host, any
// happenings at the camera, hostile names and numbers.

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

#include "simulator/camera/develop.h"
#include "simulator/camera/shots.h"
#include "simulator/camera/state.h"
#include "simulator/control/scene/language.h"
#include "simulator/sdk/delivery.h"

// Behind the seam the SDK's namespace holds two names: the virtual camera comes before it.
#include "program/dispatch.h"
#include "session/sony_worker.h"
#include "tests/temporary_folder.h"
#include "tests/worker/fuzz/bytes.h"
#include "tests/worker/fuzz/given_input.h"
#include "tests/worker/fuzz/happenings.h"
#include "tests/worker/fuzz/instant.h"
#include "tests/worker/fuzz/taken_output.h"
#include "threads/command_queue.h"

namespace {

namespace fs = std::filesystem;

// The one place where files may be made; goes when the process does not die.
class Folder {
  public:
    const std::string& path() const {
        return path_;
    }
    // The camera replaces nothing: every run would find the folder fuller.
    void clear() const {
        for (const auto& file : fs::directory_iterator(path_)) {
            fs::remove_all(file);
        }
    }

  private:
    const TemporaryFolder made_;
    const std::string path_ = made_.path();
};
const Folder g_folder;

// A line that the camera cannot do now, for want of a session or a camera, changes nothing.
void tell_camera(const std::string& line) {
    camera_sim::Hold hold;
    camera_sim::run_line(line);
}

// Until every callback has come back and every file has been sent.
void let_the_camera_finish() {
    camera_sim::Hold hold;
    while (!camera_sim::all_delivered() || camera_sim::shots_under_way()) {
        hold.wait(camera_sim::g_changed);
    }
}

}  // namespace

// In place of the camera's darkroom: a file of no size, and only in our own folder.
namespace camera_sim {

const char* ending(PictureKind kind) {
    return kind == PictureKind::jpeg ? ".JPG" : kind == PictureKind::raw ? ".ARW" : ".HIF";
}

int make_picture(const Picture&, PictureKind, const std::string& path) {
    if (path.rfind(g_folder.path() + "/", 0) != 0) {
        return EACCES;
    }
    return std::ofstream(path).good() ? 0 : EIO;
}

}  // namespace camera_sim

// Every Init says that no real camera is driven.
extern "C" void
__wrap__ZN10camera_sim4tellERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE() {}

// The queue is closed for good when the main loop ends; here another run follows.
extern "C" void __wrap__Z14close_commandsv() {}

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    take_output();
    end_input();  // so that an empty queue is the end of a run
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    main_thread.assume();
    Bytes bytes(data, size);
    SonyWorker worker;
    worker.init();
    tell_camera("timing instant");
    while (bytes.left()) {
        switch (bytes.number(7)) {
            case 0:
            case 1:
            case 2:
                tell_camera(scene_line(bytes));
                break;
            case 3:
                put_clock_forward(std::chrono::seconds(bytes.number(21)));
                let_the_watchdog_look(worker);
                break;
            case 4:
                let_the_camera_finish();
                break;
            default: {
                const std::size_t piece = bytes.number(63) + std::size_t{1};
                read_as_input(host_bytes(bytes, g_folder.path()), piece);
                run_main_loop(worker);
                taken_lines();
            }
        }
    }
    let_the_camera_finish();
    run_main_loop(worker);
    worker.disconnect(true);
    sdk::release();
    taken_lines();
    while (next_command()) {}
    g_folder.clear();
    return 0;
}
