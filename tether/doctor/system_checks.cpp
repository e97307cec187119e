// What only the system knows: whether the signature holds, and who else wants the camera.
#include <array>
#include <set>
#include <sstream>
#include <string_view>

#include "tether/doctor/checks.h"

namespace doctor {
namespace {

// Names as the process list has them; Linux cuts them after 15 bytes.
constexpr std::array<std::string_view, 8> camera_users{
    "ptpcamerad", "PTPCamera",       "mscamerad-xpc", "Image Capture",
    "Photos",     "gvfs-gphoto2-vo", "gvfsd-gphoto2", "sony-worker"};

std::string first_line(const std::string& text) {
    return text.substr(0, text.find('\n'));
}

}  // namespace

Finding signature_holds(const Bundle& bundle, const System& system) {
    if (!system.is_macos) {
        return warning("signature: not verified, that takes a Mac", "Run tether doctor there too.");
    }
    const auto application = bundle.contents.parent_path();
    const bool whole = application.extension() == ".app";
    const std::string signed_thing = whole ? application : bundle.worker;
    const Answer answer = system.run({"codesign", "--verify", "--deep", "--strict", signed_thing});
    if (answer.status == 0) {
        return ok("signature: valid");
    }
    const std::string text = "signature: " + first_line(answer.text);
    const std::string advice =
        "Sign it: tools/sign " + in_shell_quotes(application) + " IDENTITY (docs/macos.md).";
    return answer.text.find("not signed at all") == std::string::npos ? failure(text, advice)
                                                                      : warning(text, advice);
}

Finding camera_is_free(const System& system) {
    const Answer answer = system.run({"ps", "-A", "-o", "comm="});
    if (answer.status != 0) {
        return warning("other programs: cannot list them: " + first_line(answer.text), "");
    }
    std::set<std::string> running;
    std::istringstream lines(answer.text);
    for (std::string line; std::getline(lines, line);) {
        line.erase(line.find_last_not_of(' ') + 1);
        running.insert(std::filesystem::path(line).filename());
    }
    std::string found;
    for (const std::string_view name : camera_users) {
        if (running.count(std::string(name)) > 0) {
            found += (found.empty() ? "" : ", ") + std::string(name);
        }
    }
    if (found.empty()) {
        return ok("other programs: none that takes cameras for itself");
    }
    return warning("other programs: " + found + " may hold the camera",
                   "When no camera is found: end them and plug the camera in again.");
}

}  // namespace doctor
