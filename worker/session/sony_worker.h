#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "session/sdk.h"
#include "threads/main_thread.h"
#include "threads/published_string.h"

// The one camera-session object of the process. The SDK calls the On... operations on its own
// threads and one thread runs the watchdog; everything else runs on the main thread. What a
// command asks for reports its own outcome as lines.
//
//                                             device_handle  connected  watchdog_armed
//   Idle: no camera                           0              false      0
//   Opening: Connect waits for its answer     not 0          false      the attempt, 0 at an error
//   Session up                                not 0          true       0
//   Camera gone: the SDK may reconnect it     not 0          false      0
//
// An OnConnected that crosses a time-out leaves connected true with handle 0; every operation
// copes with that.
class SonyWorker final : public SCRSDK::IDeviceCallback {
  public:
    SonyWorker() = default;
    SonyWorker(const SonyWorker&) = delete;
    SonyWorker& operator=(const SonyWorker&) = delete;

    // session/sony_worker.cpp
    // Starts the SDK. False: it could not be started.
    bool init() REQUIRES(main_thread);

    // session/connection.cpp
    void connect() REQUIRES(main_thread);
    // Quiet: without "DISCONNECTED|".
    void disconnect(bool quiet) REQUIRES(main_thread);
    // Gives the handle back if `attempt` is still the latest one and was never answered.
    void connect_timed_out(unsigned int attempt) REQUIRES(main_thread);

    // session/watchdog.cpp: the body of its own thread; never returns.
    void connect_watchdog_thread();

    // settings/property_access.cpp
    // The property's current value, or the fallback when it cannot be read.
    unsigned long long read_prop(unsigned int code, unsigned long long fallback)
        REQUIRES(main_thread);
    // Writes a property, riding out a busy camera for up to 2 s. Returns the SDK's last result.
    unsigned int write_prop(unsigned int code, unsigned long long value) REQUIRES(main_thread);

    // settings/download_folder.cpp
    void set_download_dir(const std::string& dir) REQUIRES(main_thread);
    void apply_save_info() REQUIRES(main_thread);

    // settings/save_destination.cpp
    // Any word is kept; it reaches the camera at once, or with the next session.
    void set_save_destination(const std::string& word) REQUIRES(main_thread);
    void apply_store_destination() REQUIRES(main_thread);
    void card_check() REQUIRES(main_thread);

    // settings/file_type.cpp
    void set_file_type(const std::string& name) REQUIRES(main_thread);
    void file_type_check() REQUIRES(main_thread);
    // Announces the camera's file type and asks for both halves of a RAW pair; unless forced, only
    // after a change.
    void apply_pair_transfer(bool force) REQUIRES(main_thread);

    // settings/apply_settings.cpp
    void apply_settings() REQUIRES(main_thread);

    // capture/remote_capture.cpp
    void remote_capture() REQUIRES(main_thread);

    // session/callbacks.cpp: any SDK thread. They set flags, write lines and post commands; no SDK
    // calls.
    void OnConnected(SCRSDK::DeviceConnectionVersioin version) override;
    void OnDisconnected(sdk::DisconnectReason error) override;
    void OnWarning(sdk::WarningCode warning) override;
    void OnError(sdk::ErrorCode error) override;

    // settings/property_changes.cpp: any SDK thread.
    void OnPropertyChangedCodes(sdk::ChangeCount count, sdk::ChangedCodes codes) override;

    // capture/download.cpp: any SDK thread.
    void OnCompleteDownload(sdk::FileName file_name, sdk::DownloadType type) override;

    // Written by the main thread, read by it and by the SDK's threads.
    PublishedString download_dir;
    PublishedString camera_name;

    // Main thread only.
    std::string save_destination GUARDED_BY(main_thread) = "both";
    sdk::Handle device_handle GUARDED_BY(main_thread) = 0;
    bool card_fallback GUARDED_BY(main_thread) = false;
    std::uint64_t reported_file_type GUARDED_BY(main_thread) = ~std::uint64_t{0};
    std::uint32_t card_present GUARDED_BY(main_thread) = 0xFFFFFFFF;  // 1 in, 0 out, this: unknown
    std::uint32_t last_enum_error GUARDED_BY(main_thread) = 0;
    // The number of the latest attempt. The watchdog has its own from watchdog_armed: by the time
    // it looked here, the latest might be another.
    std::atomic<std::uint32_t> connect_attempt GUARDED_BY(main_thread){0};

    // Shared by the main thread and the SDK's.
    std::atomic<bool> connected{false};
    // The worker itself is giving the camera back: OnDisconnected stays silent. Only OnConnected
    // clears it.
    std::atomic<bool> closing{false};

    // Shared with the watchdog: armed and disarmed by the main thread, disarmed by the SDK's
    // threads too, taken by the watchdog. The number of the attempt that waits for its answer, 0
    // for none. It is the number and not a flag so that a late watchdog can take only the attempt
    // whose deadline it saw pass.
    std::atomic<std::uint32_t> watchdog_armed{0};
    // Written by the main thread, read by the watchdog.
    std::atomic<std::int64_t> connect_deadline_ms{0};

  private:
    bool read_card_in() REQUIRES(main_thread);
};
