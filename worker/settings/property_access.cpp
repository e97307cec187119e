// Reading and writing one camera property. Main thread only; the pauses hold up the main loop.

#include <chrono>
#include <cstdint>
#include <thread>

#include "session/sony_worker.h"

namespace {

constexpr int most_retries = 5;
constexpr std::chrono::milliseconds retry_pause{400};

}  // namespace

unsigned long long SonyWorker::read_prop(unsigned int code, unsigned long long fallback) {
    return sdk::read_property(device_handle, code, fallback);
}

unsigned int SonyWorker::write_prop(unsigned int code, unsigned long long value) {
    sdk::Property property;
    property.set_code(code);
    property.set_value(value);
    property.set_value_type();
    std::uint32_t result = property.write(device_handle);
    for (int retry = 0; retry < most_retries && result == sdk::busy; ++retry) {
        if (!connected) {
            break;
        }
        std::this_thread::sleep_for(retry_pause);
        result = property.write(device_handle);
    }
    return result;
}
