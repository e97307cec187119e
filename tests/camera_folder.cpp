#include "tests/camera_folder.h"

#include <fstream>
#include <iterator>

namespace fs = std::filesystem;

namespace {

constexpr const char* announcement = "camera-sim: simulated SDK, no real camera is driven";

// What a sanitizer says of a path that is too long for it.
constexpr const char* sanitizers_own = "reading executable name failed";

}  // namespace

void CameraFolder::write(const std::string& name, const std::string& text) const {
    fs::create_directories((path() / name).parent_path());
    std::ofstream(path() / name) << text;
}

std::string CameraFolder::read(const std::string& name) const {
    std::ifstream stream(path() / name);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void CameraFolder::write_scene(const std::string& lines) const {
    write("scene", "timing instant\n" + lines + "\n");
}

std::vector<std::pair<std::string, std::string>> CameraFolder::environment() const {
    return {{"CAMERA_SIM_SCENE", path() / "scene"},
            {"CAMERA_SIM_CONTROL", path() / "control"},
            {"CAMERA_SIM_JOURNAL", path() / "journal"}};
}

std::string CameraFolder::tell(const std::string& line) {
    std::optional<camera_sim::Reply> reply = control_ ? control_->ask(line) : std::nullopt;
    if (!reply) {
        control_ = camera_sim::ControlClient::connect(path() / "control");
        reply = control_ ? control_->ask(line) : std::nullopt;
    }
    if (!reply) {
        return "no answer from the camera";
    }
    return reply->ok ? "" : "error: " + reply->error;
}

std::string CameraFolder::complaints() const {
    std::string text;
    std::ifstream lines(path() / "stderr");
    for (std::string line; std::getline(lines, line);) {
        if (line != announcement && line.find(sanitizers_own) == std::string::npos) {
            text += line + "\n";
        }
    }
    return text;
}
