#include "tests/worker/runner/playing/stage.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <signal.h>
#include <stdlib.h>
#include <unistd.h>

#include "tests/worker/runner/reading/words.h"

namespace transcript {
namespace {

namespace fs = std::filesystem;

constexpr const char* announcement = "camera-sim: simulated SDK, no real camera is driven";

}  // namespace

std::unique_ptr<Stage> Stage::set_up(const Transcript& transcript, const fs::path& worker,
                                     std::string& error) {
    std::unique_ptr<Stage> stage(new Stage);
    if (!stage->make_folder(error)) {
        return nullptr;
    }
    const fs::path executable =
        transcript.no_adapter ? stage->copy_without_adapter(worker) : fs::canonical(worker);
    stage->bundle_ = executable.parent_path().parent_path();
    stage->write_scene(transcript);

    host::SpawnRequest request;
    request.executable = executable;
    for (const std::string& argument : transcript.arguments) {
        request.arguments.push_back(stage->filled(argument));
    }
    request.environment = {{"CAMERA_SIM_SCENE", stage->folder_ / "scene"},
                           {"CAMERA_SIM_CONTROL", stage->folder_ / "control"},
                           {"CAMERA_SIM_JOURNAL", stage->journal()}};
    for (const auto& [name, value] : transcript.environment) {
        request.environment.emplace_back(name, stage->filled(value));
    }
    request.error_file = stage->folder_ / "stderr";
    stage->worker_ = host::WorkerProcess::start(request, error);
    return stage->worker_ ? std::move(stage) : nullptr;
}

Stage::~Stage() {
    if (worker_) {
        worker_->signal(SIGKILL);
        worker_.reset();
    }
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
}

bool Stage::make_folder(std::string& error) {
    // Not where the system keeps temporary files for this user: a socket's path must be short.
    char pattern[] = "/tmp/transcript-XXXXXX";
    if (mkdtemp(pattern) == nullptr) {
        error = std::string("cannot make a temporary folder: ") + std::strerror(errno);
        return false;
    }
    folder_ = pattern;
    fs::create_directory(folder_ / "dir");
    return true;
}

void Stage::write_scene(const Transcript& transcript) const {
    std::ofstream scene(folder_ / "scene");
    scene << "timing instant\n";
    for (const std::string& line : transcript.scene) {
        scene << filled(line) << "\n";
    }
}

fs::path Stage::copy_without_adapter(const fs::path& worker) const {
    const fs::path contents = folder_ / "Contents";
    fs::create_directories(contents / "MacOS");
    fs::create_directories(contents / "Frameworks");
    fs::path executable = contents / "MacOS" / worker.filename();
    // A copy, because the worker would find itself, and the adapter, where a symbolic link leads.
    // Made by a process of its own: a sibling that is being started at this moment would inherit
    // the file open for writing, and nobody can run such a file.
    std::string error;
    const auto copying =
        host::WorkerProcess::start({"/bin/cp", {fs::canonical(worker), executable}, {}, {}}, error);
    if (copying) {
        copying->await_exit(host::TimePoint::max());
    }
    fs::create_directory_symlink(fs::canonical(worker).parent_path() / "../Frameworks/SonySDK",
                                 contents / "Frameworks/SonySDK");
    return executable;
}

std::string Stage::filled(const std::string& text) const {
    return replaced(replaced(text, "{dir}", (folder_ / "dir").string()), "{bundle}",
                    bundle_.string());
}

std::string Stage::tell_camera(const std::string& line) {
    if (!control_) {
        control_ = camera_sim::ControlClient::connect(folder_ / "control");
    }
    const auto reply = control_ ? control_->ask(line) : std::nullopt;
    if (!reply) {
        control_.reset();
        return "no answer from the camera";
    }
    return reply->ok ? "" : "error: " + reply->error;
}

std::string Stage::complaints() const {
    std::string text;
    std::ifstream lines(folder_ / "stderr");
    for (std::string line; std::getline(lines, line);) {
        if (line != announcement) {
            text += line + "\n";
        }
    }
    return text;
}

}  // namespace transcript
