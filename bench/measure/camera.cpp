#include "bench/measure/camera.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <fstream>
#include <sstream>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

constexpr double microseconds_per_second = 1e6;

fs::path make_folder() {
    // The path of a socket must be short, and some systems' folders for temporary files are not.
    char pattern[] = "/tmp/bench-XXXXXX";
    if (mkdtemp(pattern) == nullptr) {
        give_up("no folder can be made in /tmp");
    }
    return pattern;
}

}  // namespace

Camera::Camera(const std::string& scene) : folder_(make_folder()) {
    std::ofstream(folder_ / "scene") << "timing instant\n" << scene << "\n";
    fs::create_directory(folder_ / "shots");
}

Camera::~Camera() {
    std::error_code left_behind;
    fs::remove_all(folder_, left_behind);
}

Subject::Environment Camera::environment() const {
    return {{"CAMERA_SIM_SCENE", folder_ / "scene"}, {"CAMERA_SIM_CONTROL", folder_ / "control"}};
}

Subject::Environment Camera::environment_with_journal() const {
    Subject::Environment variables = environment();
    variables.emplace_back("CAMERA_SIM_JOURNAL", folder_ / "journal");
    return variables;
}

void Camera::tell(std::string_view lines) {
    if (!control_.is_open()) {
        listen_in();
    }
    while (!lines.empty()) {
        const ssize_t sent = write(control_.number(), lines.data(), lines.size());
        if (sent < 0) {
            give_up("the virtual camera takes no control lines");
        }
        lines.remove_prefix(static_cast<std::size_t>(sent));
    }
}

void Camera::await_answers(int count) {
    std::array<char, 4096> answers;
    while (count > 0) {
        const ssize_t got = read(control_.number(), answers.data(), answers.size());
        if (got <= 0) {
            give_up("the virtual camera has gone");
        }
        // An answer is "ok"; what was asked wrongly would be answered at length.
        const auto end = answers.begin() + got;
        if (std::search(answers.begin(), end, "error", std::strchr("error", '\0')) != end) {
            give_up("the virtual camera says " + std::string(answers.begin(), end));
        }
        count -= static_cast<int>(std::count(answers.begin(), end, '\n'));
    }
}

std::vector<double> Camera::journaled(std::string_view call) const {
    std::vector<double> starts;
    std::ifstream journal(folder_ / "journal");
    for (std::string line; std::getline(journal, line);) {
        std::istringstream fields(line);
        std::array<std::string, 4> field;  // start, duration, thread, call
        for (std::string& text : field) {
            std::getline(fields, text, '\t');
        }
        if (field[3] == call) {
            starts.push_back(std::stod(field[0]) * microseconds_per_second);
        }
    }
    return starts;
}

void Camera::listen_in() {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, (folder_ / "control").c_str());
    control_ = host::Descriptor(socket(AF_UNIX, SOCK_STREAM, 0));
    if (connect(control_.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) !=
        0) {
        give_up("the virtual camera does not listen");
    }
}
