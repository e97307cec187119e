// One run of the worker with a virtual camera, in a folder of its own.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/process/line_stream.h"
#include "host/process/worker_process.h"
#include "tests/camera_folder.h"

struct Plan {
    std::string scene = {};  // behind "timing instant"
    std::vector<std::string> arguments = {};
    std::string shell =
        {};  // starts the worker, which is "$@" there; empty: it is started directly
    std::vector<std::pair<std::string, std::string>> environment = {};
    std::filesystem::path worker = {};  // empty: the one that was built with this program
};

class LiveWorker {
  public:
    explicit LiveWorker(const Plan& plan = {});
    // Ends the worker if it still runs, and expects it not to have complained.
    ~LiveWorker();
    LiveWorker(const LiveWorker&) = delete;
    LiveWorker& operator=(const LiveWorker&) = delete;

    host::WorkerProcess& process() {
        return *process_;
    }
    const std::filesystem::path& folder() const {
        return folder_.path();
    }

    bool send(std::string_view line) {
        return process_->send(line);
    }
    bool send_bytes(std::string_view bytes) {
        return process_->send_bytes(bytes);
    }
    bool signal(int number) {
        return process_->signal(number);
    }
    void close_input() {
        process_->close_input();
    }
    void close_output() {
        process_->close_output();
    }
    bool output_ended() {
        return process_->output_ended();
    }

    // The next line, or in brackets what came instead of one.
    std::string next();
    // Passes over lines until this one.
    bool await_line(const std::string& line);

    // From the banner to "READY|OK".
    void expect_opening();
    // Connects, and waits until the settings have been brought in line.
    void bring_session_up();

    // Passes over SDK calls until this one has begun or ended: its name and arguments.
    bool await_call(const std::string& call);
    // A line of the scene language, live.
    void tell_camera(const std::string& line);

    // How it ended; failing when it did not.
    host::Exit exit();
    // Runs the action and expects the worker to leave with status 0, without a further line, in a
    // time between these two.
    void expect_end(const std::function<void()>& action, host::Duration least, host::Duration most);
    void expect_prompt_end(const std::function<void()>& action);

    // What stands in standard error besides the virtual camera's announcement. Not expected to be
    // empty any more.
    std::string take_complaints();

  private:
    CameraFolder folder_;
    std::unique_ptr<host::LineStream> journal_;
    std::unique_ptr<host::WorkerProcess> process_;
    bool complaints_taken_ = false;
};

namespace host {

// For the messages of failing tests.
inline void PrintTo(const Exit& exit, std::ostream* out) {
    *out << describe(exit);
}

}  // namespace host
