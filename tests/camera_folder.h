// A folder with all that a virtual camera needs: its scene, its journal, the socket at which it
// listens, and what its worker writes on standard error. For every test of whoever drives it.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "simulator/control/client.h"
#include "tests/temporary_folder.h"

class CameraFolder {
  public:
    // Without symbolic links.
    const std::filesystem::path& path() const {
        return folder_.path();
    }

    void write(const std::string& name, const std::string& text) const;
    std::string read(const std::string& name) const;

    // The scene is "scene", of a camera that takes no time; the others are "control" and "journal".
    void write_scene(const std::string& lines) const;
    std::vector<std::pair<std::string, std::string>> environment() const;

    // A line of the scene language, live: an empty text when the camera answered ok, otherwise what
    // went wrong. A camera that has taken the place of another is asked in its turn.
    std::string tell(const std::string& line);

    // What stands in "stderr" besides the virtual camera's announcement of itself.
    std::string complaints() const;

  private:
    const TemporaryFolder folder_;
    std::optional<camera_sim::ControlClient> control_;
};
