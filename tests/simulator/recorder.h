#pragma once

#include <CRSDK/CameraRemote_SDK.h>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

// Writes down every callback that it gets, as the journal does.
class Recorder final : public SCRSDK::IDeviceCallback {
  public:
    void OnConnected(SCRSDK::DeviceConnectionVersioin version) override;
    void OnDisconnected(CrInt32u error) override;
    void OnPropertyChangedCodes(CrInt32u count, CrInt32u* codes) override;
    void OnCompleteDownload(CrChar* name, CrInt32u type) override;
    void OnWarning(CrInt32u warning) override;
    void OnError(CrInt32u error) override;

    // Runs in the callbacks to come, before they are written down.
    std::function<void()> meanwhile;

    std::vector<std::string> calls();
    std::vector<std::thread::id> threads();  // of the calls, in order
    // Whether that call comes within a minute, if it has not come already.
    bool got(const std::string& call);
    // Whether so many calls begin like that within a minute.
    bool got(const std::string& beginning, std::ptrdiff_t count);

  private:
    void record(std::string call);

    std::mutex mutex_;
    std::condition_variable recorded_;
    std::vector<std::string> calls_;
    std::vector<std::thread::id> threads_;
};
