#pragma once

// An application around the simulated SDK, for its tests: a scene, the twelve functions in short,
// the callbacks as they came, the control socket and the journal. One per test; everything is
// called from the test's own thread.

#include <CRSDK/CameraRemote_SDK.h>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "simulator/control/client.h"
#include "tests/simulator/recorder.h"

class Stage {
  public:
    // The scene's lines; "timing instant" and small pictures come before them.
    explicit Stage(const std::string& scene = "");
    ~Stage();  // releases what the test has left
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    bool init();
    SCRSDK::ICrEnumCameraObjectInfo* find();
    // Result of Connect to the camera at that index; the handle is in `handle`.
    CrInt32u connect(CrInt32u index = 0);
    // Init, Connect and the answer.
    void open();
    // What open leaves to do for shots in this folder.
    void save_to(const std::filesystem::path& folder);
    CrInt32u set(CrInt32u code, CrInt64u value);
    // The value, or nothing when it cannot be read.
    std::optional<CrInt64u> get(CrInt32u code);
    CrInt32u save_info(const std::string& path, const std::string& prefix = "", int number = -1);
    void shoot();  // the whole sequence, from half-press to half-release
    void close();  // Disconnect, ReleaseDevice, Release

    // Sends a control line: "" for ok, otherwise the sentence.
    std::string tell(const std::string& line);
    std::vector<std::string> state();
    void wait();  // `wait`

    std::vector<std::string> journal();  // the calls and results, a blank between them
    std::vector<std::vector<std::string>> journal_fields();

    const std::filesystem::path& folder() const {
        return folder_;
    }
    std::filesystem::path shots() const {
        return folder_ / "shots";
    }
    // The files there, by name in order.
    std::vector<std::string> files();

    Recorder recorder;
    SCRSDK::CrDeviceHandle handle = 0;

  private:
    std::filesystem::path folder_;
    std::optional<camera_sim::ControlClient> control_;
    bool running_ = false;
};
