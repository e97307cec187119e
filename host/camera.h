// A camera as a host wants it: connected, asked for a shot, and its pictures whole in a folder, or
// a reason that can be shown. Puts together the brain, which decides; the worker's process; and the
// disk, which has a thread of its own.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "host/values/picture.h"
#include "host/values/problem.h"
#include "host/values/requests.h"
#include "host/values/session_state.h"
#include "host/values/settings.h"
#include "host/values/shot.h"
#include "host/values/time.h"

namespace host {

namespace brain {
struct Times;
}

// One line of the wire. error: what the worker writes on standard error.
struct WireLine {
    enum class Direction { to_worker, from_worker, error };
    Direction direction = Direction::from_worker;
    std::string text;  // without its line feed
    Time at{};         // since the camera was made
};

// What happens by itself. Called on the camera's own thread, one at a time and in order; none may
// wait for anything, and none may destroy the camera.
struct Listener {
    std::function<void(const SessionState&)> state;
    // True: the host knows of it from now on. False: it will say told(), or is told of the picture
    // once more after the next start.
    std::function<bool(const Picture&)> picture;
    std::function<void(const Shot&)> shot;  // when fired and when over
    std::function<void(const Problem&)> problem;
    std::function<void(const WireLine&)> line;
};

// The pictures, or the problem of a disk that does not answer.
using PicturesAnswer = std::variant<std::vector<Picture>, Problem>;

struct CameraOptions {
    std::string worker;                                            // path of the program
    std::vector<std::pair<std::string, std::string>> environment;  // on top of this process's own
    Wishes wishes;
    Listener listener;
    const brain::Times* times = nullptr;  // nothing: the usual ones; must outlive the camera
};

// Every operation may be called from any thread. Those that wait must not be called by a listener.
class Camera {
  public:
    // Nothing is started yet.
    explicit Camera(CameraOptions options);
    // Shuts down in order if that has not been done.
    ~Camera();
    Camera(const Camera&) = delete;
    Camera& operator=(const Camera&) = delete;

    // `answered` is called exactly once, on the camera's thread, unless the camera is destroyed
    // before.
    void ask(Request request, std::function<void(const Answer&)> answered);

    // The same, waiting for the answer. Nothing: it went well. A worker that cannot be started is
    // said at once, a camera that cannot be reached after 60 s; connecting goes on all the same.
    std::optional<Problem> start();
    std::optional<Problem> connect();
    Shot capture(Capture request = {});
    Ended shutdown(std::optional<Time> patience = {});

    // The host knows of the picture now.
    void told(std::string id);

    // From the ledger, oldest first, at most `limit`; those behind `after` when it is an id.
    // `answered` is called exactly once, on the camera's thread, unless the camera is destroyed
    // before; with a problem when the disk has not answered within 1 s.
    void pictures(std::string after, std::size_t limit,
                  std::function<void(const PicturesAnswer&)> answered);

    // Behind "CPP_WORKER|"; empty before the worker has said it.
    std::string banner() const;

  private:
    class Machinery;
    std::unique_ptr<Machinery> machinery_;
};

}  // namespace host
