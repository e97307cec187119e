#include "tether/session_options.h"

#include <cstdlib>
#include <filesystem>

#include "host/pictures/store.h"
#include "host/process/beside_this_program.h"
#include "tether/ranges.h"

namespace tether {
namespace {

namespace fs = std::filesystem;

constexpr Range patience_range{"SECONDS", "0123456789.", 0.1, 3'600, "0.1 to 3600"};

}  // namespace

std::string usual_worker() {
    const char* named = std::getenv("TETHER_WORKER");
    return named != nullptr && *named != '\0' ? named : host::worker_beside_this_program().string();
}

std::string usual_bundle() {
    return fs::path(usual_worker()).parent_path().parent_path().parent_path();
}

void declare(CLI::App& command, SessionOptions& options) {
    command
        .add_option("--patience", options.patience, "Seconds to wait for the pictures of a shot")
        ->check(in(patience_range))
        ->type_name(type_of(patience_range))
        ->capture_default_str();
    command.add_option("--folder", options.folder, "Where the pictures go")->capture_default_str();
    command
        .add_option("--name", options.name,
                    "How files are named: {camera} (its own name), {date}, {time}, {shot}, {n}, as "
                    "in {date}/{n:4}")
        ->check(
            CLI::Validator([](std::string& text) { return host::pictures::why_no_name(text); }, ""))
        ->type_name("TEMPLATE");
    command.add_option("--file-type", options.file_type, "What the camera makes of a shot")
        ->check(CLI::IsMember({"jpeg", "raw", "both"}));
    command.add_option("--save-dest", options.save_dest, "Where the camera puts its shots")
        ->check(CLI::IsMember({"disk", "card", "both"}))
        ->capture_default_str();
    command.add_option("--worker", options.worker, "The camera worker")->check(CLI::ExistingFile);
    command.add_option("--scene", options.scene, "A scene for the virtual camera")
        ->check(CLI::ExistingFile);
    command.add_option("--pictures", options.pictures, "Pictures for the virtual camera to take")
        ->check(CLI::ExistingDirectory);
    CLI::Option* record =
        command.add_option("--record", options.record,
                           "Write every line with its time to a new file; one with something in "
                           "it is refused");
    command.add_flag("--redact", options.redact, "Keep paths and names out of the record")
        ->needs(record);
}

std::vector<std::pair<std::string, std::string>> environment_of(const SessionOptions& options) {
    std::vector<std::pair<std::string, std::string>> environment;
    if (!options.scene.empty()) {
        environment.emplace_back("CAMERA_SIM_SCENE", fs::absolute(options.scene));
    }
    if (!options.pictures.empty()) {
        environment.emplace_back("CAMERA_SIM_PICTURES", fs::absolute(options.pictures));
    }
    return environment;
}

host::CameraOptions camera_options(const SessionOptions& options) {
    host::CameraOptions camera;
    camera.worker = options.worker;
    camera.environment = environment_of(options);
    camera.wishes.folder = options.folder;
    camera.wishes.save_destination =
        host::save_destination_of(options.save_dest).value_or(host::SaveDestination::disk);
    camera.wishes.file_type = host::file_type_of(options.file_type);
    camera.wishes.name = options.name;
    camera.wishes.patience =
        std::chrono::duration_cast<host::Time>(std::chrono::duration<double>(options.patience));
    return camera;
}

}  // namespace tether
