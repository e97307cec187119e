// The file type that the camera shoots, and both halves of a RAW pair. Main thread only.

#include <chrono>
#include <thread>

#include "protocol/emit.h"
#include "session/sony_worker.h"
#include "settings/property_codes.h"

namespace {

// Until then the camera may still answer with the old file type.
constexpr std::chrono::milliseconds switch_time{600};

const char* word_for(std::uint64_t value) {
    switch (value) {
        case file_type::jpeg:
            return "jpeg";
        case file_type::raw:
            return "raw";
        case file_type::raw_and_jpeg:
            return "both";
        default:
            // RAW+HEIF too, on purpose: the host has no word for it and learns of the pair only
            // from the log.
            return "other";
    }
}

}  // namespace

void SonyWorker::set_file_type(const std::string& name) {
    if (!connected) {
        emit("ERROR|Camera not connected");
        return;
    }
    std::uint64_t value = 0;
    if (name == "jpeg") {
        value = file_type::jpeg;
    } else if (name == "raw") {
        value = file_type::raw;
    } else if (name == "both") {
        value = file_type::raw_and_jpeg;
    } else {
        emit("ERROR|Unknown file type: " + name);
        return;
    }
    const std::uint32_t result = write_prop(property::file_type, value);
    if (result == sdk::ok) {
        emit_log("file type asked of the camera: " + name);
        std::this_thread::sleep_for(switch_time);
    } else {
        emit_log("the camera would not change its file type (" + hex_code(result) + ")");
        emit("ERROR|The camera would not change its file type — set it on the camera");
    }
    // Whatever came of it, the host is told what the camera really uses.
    apply_pair_transfer(true);
}

void SonyWorker::file_type_check() {
    if (connected) {
        apply_pair_transfer(false);
    }
}

void SonyWorker::apply_pair_transfer(bool force) {
    const std::uint64_t value = read_prop(property::file_type, property::unreadable);
    if (value == property::unreadable || (!force && value == reported_file_type)) {
        return;
    }
    reported_file_type = value;
    emit(std::string("FILE_TYPE|") + word_for(value));

    if (value != file_type::raw_and_jpeg && value != file_type::raw_and_heif) {
        return;
    }
    const bool jpeg_half = value == file_type::raw_and_jpeg;
    const std::uint32_t result =
        write_prop(property::raw_pair_transfer,
                   jpeg_half ? pair_transfer::raw_and_jpeg : pair_transfer::raw_and_heif);
    if (result != sdk::ok) {
        emit_log("could not ask for both halves of a RAW pair (" + hex_code(result) +
                 ") — the camera sends its own choice");
        return;
    }
    emit_log(jpeg_half ? "RAW+JPEG at the camera — both files come to the computer"
                       : "RAW+HEIF at the camera — both files come to the computer");
}
