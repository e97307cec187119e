#include "session/sony_worker.h"

#include "protocol/emit.h"

bool SonyWorker::init() {
    if (!sdk::init()) {
        emit("ERROR|Sony Camera Remote SDK failed to initialise");
        return false;
    }
    // The lowest byte is left out on purpose.
    const std::uint32_t version = sdk::version();
    emit_log("Camera Remote SDK " + std::to_string(version >> 24) + "." +
             std::to_string(version >> 16 & 0xFF) + "." + std::to_string(version >> 8 & 0xFF));
    return true;
}
