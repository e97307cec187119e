#include "tests/worker/runner/playing/stage.h"

#include <signal.h>

#include "tests/worker/runner/reading/words.h"

namespace transcript {

namespace fs = std::filesystem;

std::unique_ptr<Stage> Stage::set_up(const Transcript& transcript, const fs::path& worker,
                                     std::string& error) {
    std::unique_ptr<Stage> stage(new Stage);
    fs::create_directory(stage->folder_.path() / "dir");
    const fs::path executable =
        transcript.no_adapter ? stage->copy_without_adapter(worker) : fs::canonical(worker);
    stage->bundle_ = executable.parent_path().parent_path();
    stage->write_scene(transcript);

    host::SpawnRequest request;
    request.executable = executable;
    for (const std::string& argument : transcript.arguments) {
        request.arguments.push_back(stage->filled(argument));
    }
    request.environment = stage->folder_.environment();
    for (const auto& [name, value] : transcript.environment) {
        request.environment.emplace_back(name, stage->filled(value));
    }
    request.error_file = stage->folder_.path() / "stderr";
    stage->worker_ = host::WorkerProcess::start(request, error);
    return stage->worker_ ? std::move(stage) : nullptr;
}

Stage::~Stage() {
    if (worker_) {
        worker_->signal(SIGKILL);
        worker_.reset();
    }
}

void Stage::write_scene(const Transcript& transcript) const {
    std::string lines;
    for (const std::string& line : transcript.scene) {
        lines += filled(line) + "\n";
    }
    folder_.write_scene(lines);
}

fs::path Stage::copy_without_adapter(const fs::path& worker) const {
    const fs::path contents = folder_.path() / "Contents";
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
    return replaced(replaced(text, "{dir}", (folder_.path() / "dir").string()), "{bundle}",
                    bundle_.string());
}

}  // namespace transcript
