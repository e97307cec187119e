#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "bench/measure/subject.h"
#include "host/process/pipe.h"

// What a worker's virtual camera is like, and the way to direct and to watch it: a folder of its
// own with the scene, the control socket and the journal.
class Camera {
  public:
    // Nothing takes time but what the scene says.
    explicit Camera(const std::string& scene);
    ~Camera();
    Camera(const Camera&) = delete;
    Camera& operator=(const Camera&) = delete;

    Subject::Environment environment() const;
    Subject::Environment environment_with_journal() const;

    const std::filesystem::path& folder() const {
        return folder_;
    }

    // Writes control lines without waiting for what they do; await_answers() takes that up later,
    // so that the caller can sleep in the pipe that it measures.
    void tell(std::string_view lines);
    void await_answers(int count);

    // When each call or callback of that text began, in microseconds of the steady clock.
    std::vector<double> journaled(std::string_view call) const;

  private:
    void listen_in();

    std::filesystem::path folder_;
    host::Descriptor control_;
};
