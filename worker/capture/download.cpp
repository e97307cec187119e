// Reports a file that the camera has sent to the computer. An SDK thread; the session may be
// closing meanwhile.

#include <cstdint>
#include <string>

#include "protocol/emit.h"
#include "protocol/fields.h"
#include "session/sony_worker.h"

namespace {

// The one value with which the SDK reports a file that has arrived.
constexpr std::uint32_t file_arrived = 0xFFFFFFFF;

}  // namespace

void SonyWorker::OnCompleteDownload(sdk::FileName file_name, sdk::DownloadType type) {
    if (static_cast<std::uint32_t>(type) != file_arrived) {
        return;
    }
    const std::string name = file_name != nullptr ? file_name : "";
    if (name.empty()) {
        return;
    }
    const std::string path = name.front() == '/' ? name : download_dir.get() + "/" + name;
    emit_log("landed " + name);
    emit("DOWNLOADED|" + escape_field(path));
}
