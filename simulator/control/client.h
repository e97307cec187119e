#pragma once

// The other end of the control socket, for programs that direct a virtual camera. One thread.

#include <optional>
#include <string>
#include <vector>

namespace camera_sim {

struct Reply {
    bool ok = false;
    std::string error;               // the sentence behind "error: "
    std::vector<std::string> lines;  // without the leading blanks
};

class ControlClient {
  public:
    // Nothing when nobody listens there.
    static std::optional<ControlClient> connect(const std::string& path);
    ControlClient(ControlClient&& other) noexcept;
    ControlClient& operator=(ControlClient&& other) noexcept;
    ~ControlClient();

    // Waits for the answer; nothing when the camera went away.
    std::optional<Reply> ask(const std::string& line);

  private:
    explicit ControlClient(int socket) : socket_(socket) {}
    std::optional<std::string> read_line();

    int socket_;
    std::string received_;
};

}  // namespace camera_sim
