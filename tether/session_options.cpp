#include "tether/session_options.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "host/pictures/store.h"
#include "host/process/beside_this_program.h"
#include "tether/doctor/checks.h"
#include "tether/ranges.h"

namespace tether {
namespace {

namespace fs = std::filesystem;

constexpr Range patience_range{"SECONDS", "0123456789.", 0.1, 3'600, "0.1 to 3600"};

// The virtual camera would find none at each shot.
std::string why_no_pictures(const std::string& folder) {
    std::error_code failure;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, failure)) {
        std::string ending = entry.path().extension();
        std::transform(ending.begin(), ending.end(), ending.begin(),
                       [](unsigned char byte) { return static_cast<char>(std::tolower(byte)); });
        const bool jpeg = ending == ".jpg" || ending == ".jpeg";
        if (jpeg && entry.path().filename().string()[0] != '.' && entry.is_regular_file(failure)) {
            return "";
        }
    }
    return failure ? "cannot read " + folder + ": " + failure.message()
                   : "there is no JPEG in " + folder;
}

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
    command.add_option("--folder", options.folder, "Where the pictures go")
        ->type_name("FOLDER")
        ->capture_default_str();
    command
        .add_option("--name", options.name,
                    "How files are named: {camera} (its own name), {date}, {time}, {shot}, {n}, as "
                    "in {date}/{n:4}")
        ->check(
            CLI::Validator([](std::string& text) { return host::pictures::why_no_name(text); }, ""))
        ->type_name("TEMPLATE");
    command.add_option("--file-type", options.file_type, "What the camera makes of a shot")
        ->check(CLI::IsMember({"jpeg", "raw", "both"}).description(""))
        ->type_name("jpeg|raw|both");
    command.add_option("--save-dest", options.save_dest, "Where the camera puts its shots")
        ->check(CLI::IsMember({"disk", "card", "both"}).description(""))
        ->type_name("disk|card|both")
        ->capture_default_str();
    command.add_option("--worker", options.worker, "The camera worker")
        ->check(CLI::ExistingFile.description(""))
        ->type_name("FILE");
    command.add_option("--scene", options.scene, "A scene for the virtual camera")
        ->check(CLI::ExistingFile.description(""))
        ->type_name("FILE");
    command.add_option("--pictures", options.pictures, "Pictures for the virtual camera to take")
        ->check(CLI::ExistingDirectory.description(""))
        ->check(CLI::Validator(why_no_pictures, ""))
        ->type_name("FOLDER");
    CLI::Option* record =
        command
            .add_option("--record", options.record,
                        "Write every line with its time to a new file; one with something in "
                        "it is refused")
            ->type_name("FILE");
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

serve::Options serve_options(const SessionOptions& session) {
    serve::Options options;
    options.camera = camera_options(session);
    // One that is empty, or counts from a folder that is gone, is missing like any other.
    std::error_code nowhere;
    const fs::path worker = fs::absolute(session.worker, nowhere);
    options.camera.worker = nowhere ? session.worker : worker.string();
    options.record = session.record;
    options.redact = session.redact;
    return options;
}

std::string why_no_folder(const std::string& folder) {
    std::error_code failure;
    if (fs::is_directory(folder, failure)) {
        const doctor::Finding finding = doctor::folder_takes_pictures(folder);
        return finding.verdict == doctor::Verdict::failure ? finding.text : "";
    }
    fs::path place = fs::absolute(folder, failure).lexically_normal();
    place = place.has_filename() ? place : place.parent_path();
    const bool can_be_made =
        folder.empty() ? false : fs::is_directory(place.parent_path(), failure);
    return fs::exists(place, failure) ? "cannot use the folder " + folder + ": it is no folder"
           : can_be_made
               ? ""
               : "cannot make the folder " + folder + ": the one that it is in is missing";
}

}  // namespace tether
