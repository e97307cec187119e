// What one performance of a transcript needs: a temporary folder, a worker, and a line to its
// camera.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "host/process/worker_process.h"
#include "simulator/control/client.h"
#include "tests/worker/runner/reading/transcript.h"

namespace transcript {

class Stage {
  public:
    // Nothing, and why in `error`, when the worker could not be started.
    static std::unique_ptr<Stage> set_up(const Transcript& transcript,
                                         const std::filesystem::path& worker, std::string& error);

    // Kills a worker that still runs and removes the folder.
    ~Stage();

    host::WorkerProcess& worker() {
        return *worker_;
    }

    // With {dir}, the folder that belongs to the transcript, and {bundle}, the Contents folder of
    // the worker, filled in.
    std::string filled(const std::string& text) const;

    std::filesystem::path journal() const {
        return folder_ / "journal";
    }

    // An empty text when the camera answered ok, otherwise what went wrong.
    std::string tell_camera(const std::string& line);

    // What stands in the worker's standard error besides the virtual camera's announcement of
    // itself.
    std::string complaints() const;

  private:
    Stage() = default;
    bool make_folder(std::string& error);
    void write_scene(const Transcript& transcript) const;
    std::filesystem::path copy_without_adapter(const std::filesystem::path& worker) const;

    std::filesystem::path folder_;
    std::filesystem::path bundle_;
    std::unique_ptr<host::WorkerProcess> worker_;
    std::optional<camera_sim::ControlClient> control_;
};

}  // namespace transcript
