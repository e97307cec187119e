// camera-sim: directs the virtual camera of a running program. With a command it sends that line;
// without one it sends the lines of standard input, one after the other.

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <string>

#include "simulator/control/client.h"

namespace {

constexpr const char* usage =
    "usage: camera-sim [--socket PATH] [COMMAND...]\n"
    "Sends COMMAND, or each line of standard input, to the virtual camera that\n"
    "listens at PATH (default: $CAMERA_SIM_CONTROL). The command help names all\n"
    "others; --version tells this program's version.\n"
    "Example:\n"
    "  camera-sim card out\n";

// The command as one line: what the shell unquoted is quoted again.
std::string to_line(int count, char** words) {
    std::string line;
    for (int index = 0; index < count; ++index) {
        const std::string word = words[index];
        const bool plain = !word.empty() && word.find_first_of(" \t#\"\\\n\r") == std::string::npos;
        line += index == 0 ? "" : " ";
        if (plain || count == 1) {
            line += word;
            continue;
        }
        line += '"';
        for (const char c : word) {
            line += c == '"' || c == '\\' ? std::string{'\\', c}
                    : c == '\n'           ? "\\n"
                    : c == '\r'           ? "\\r"
                                          : std::string(1, c);
        }
        line += '"';
    }
    return line;
}

// Prints the answer; 0 for ok, 1 for an error, 2 when the camera went away.
int send(camera_sim::ControlClient& camera, const std::string& line) {
    const auto reply = camera.ask(line);
    if (!reply) {
        std::cerr << "camera-sim: the camera went away\n";
        return 2;
    }
    for (const std::string& entry : reply->lines) {
        std::cout << entry << '\n';
    }
    std::cout.flush();
    if (!reply->ok) {
        std::cerr << "camera-sim: " << reply->error << '\n';
    }
    return reply->ok ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    const char* environment = std::getenv("CAMERA_SIM_CONTROL");
    std::string path = environment != nullptr ? environment : "";
    int first = 1;
    if (argc == 2 && std::string(argv[1]) == "--version") {
        std::cout << "camera-sim " CAMERA_SIM_VERSION "\n";
        return 0;
    }
    if (argc > 1 && (std::string(argv[1]) == "--help" || std::string(argv[1]) == "-h")) {
        std::cout << usage;
        return 0;
    }
    if (argc > 2 && std::string(argv[1]) == "--socket") {
        path = argv[2];
        first = 3;
    }
    // Commands do not begin so.
    if (first < argc && argv[first][0] == '-' && std::string(argv[first]) != "--socket") {
        std::cerr << "camera-sim: there is no option " << argv[first]
                  << "; there are --socket, --help and --version\n";
        return 2;
    }
    if (path.empty() || (first < argc && argv[first][0] == '-')) {
        std::cerr << usage;
        return 2;
    }
    auto camera = camera_sim::ControlClient::connect(path);
    if (!camera) {
        std::cerr << "camera-sim: no virtual camera listens at " << path << '\n';
        return 2;
    }
    if (first < argc) {
        return send(*camera, to_line(argc - first, argv + first));
    }
    int worst = 0;
    for (std::string line; worst < 2 && std::getline(std::cin, line);) {
        worst = std::max(worst, send(*camera, line));
    }
    return worst;
}
