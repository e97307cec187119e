// The folder that the camera's files are downloaded into. Main thread only.

#include "protocol/emit.h"
#include "protocol/fields.h"
#include "session/sony_worker.h"

void SonyWorker::set_download_dir(const std::string& dir) {
    download_dir.publish(dir);
    emit("DOWNLOAD_DIR|" + escape_field(dir));
    if (connected) {
        apply_save_info();
    }
}

void SonyWorker::apply_save_info() {
    if (download_dir.get().empty()) {
        // A folder that the SDK was given earlier is not withdrawn.
        emit_log("no download folder yet — shots stay on the camera");
        return;
    }
    const std::uint32_t result = sdk::set_save_info(device_handle, download_dir.get());
    if (result != sdk::ok) {
        emit("ERROR|Could not set the download folder (" + hex_code(result) + ")");
    }
}
