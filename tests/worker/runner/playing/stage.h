// What one performance of a transcript needs: a folder for its camera, and a worker.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "host/process/worker_process.h"
#include "tests/camera_folder.h"
#include "tests/worker/runner/reading/transcript.h"

namespace transcript {

class Stage {
  public:
    // Nothing, and why in `error`, when the worker could not be started.
    static std::unique_ptr<Stage> set_up(const Transcript& transcript,
                                         const std::filesystem::path& worker, std::string& error);

    // Kills a worker that still runs.
    ~Stage();

    host::WorkerProcess& worker() {
        return *worker_;
    }

    // With {dir}, the folder that belongs to the transcript, and {bundle}, the Contents folder of
    // the worker, filled in.
    std::string filled(const std::string& text) const;

    std::filesystem::path journal() const {
        return folder_.path() / "journal";
    }

    // An empty text when the camera answered ok, otherwise what went wrong.
    std::string tell_camera(const std::string& line) {
        return folder_.tell(line);
    }

    // What stands in the worker's standard error besides the virtual camera's announcement of
    // itself.
    std::string complaints() const {
        return folder_.complaints();
    }

  private:
    Stage() = default;
    void write_scene(const Transcript& transcript) const;
    std::filesystem::path copy_without_adapter(const std::filesystem::path& worker) const;

    CameraFolder folder_;
    std::filesystem::path bundle_;
    std::unique_ptr<host::WorkerProcess> worker_;
};

}  // namespace transcript
