#include "tests/simulator/recorder.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <utility>

using namespace SCRSDK;

namespace {

std::string hex(CrInt32u number, int digits = 8) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%0*X", digits, number);
    return text;
}

}  // namespace

void Recorder::OnConnected(DeviceConnectionVersioin version) {
    record("OnConnected " + std::to_string(version));
}

void Recorder::OnDisconnected(CrInt32u error) {
    record("OnDisconnected " + hex(error));
}

void Recorder::OnPropertyChangedCodes(CrInt32u count, CrInt32u* codes) {
    std::string call = "OnPropertyChangedCodes";
    if (codes == nullptr) {
        call += " null " + std::to_string(count);
    }
    for (CrInt32u index = 0; codes != nullptr && index < count; ++index) {
        call += " " + hex(codes[index], 4);
    }
    record(call);
}

void Recorder::OnCompleteDownload(CrChar* name, CrInt32u type) {
    record("OnCompleteDownload " + (name != nullptr ? "\"" + std::string(name) + "\"" : "null") +
           " " + hex(type));
}

void Recorder::OnWarning(CrInt32u warning) {
    record("OnWarning " + hex(warning));
}

void Recorder::OnError(CrInt32u error) {
    record("OnError " + hex(error));
}

std::vector<std::string> Recorder::calls() {
    const std::lock_guard lock(mutex_);
    return calls_;
}

std::vector<std::thread::id> Recorder::threads() {
    const std::lock_guard lock(mutex_);
    return threads_;
}

bool Recorder::got(const std::string& call) {
    std::unique_lock lock(mutex_);
    return recorded_.wait_for(lock, std::chrono::seconds(60), [&] {
        return std::find(calls_.begin(), calls_.end(), call) != calls_.end();
    });
}

bool Recorder::got(const std::string& beginning, std::ptrdiff_t count) {
    const auto begins = [&](const std::string& call) {
        return call.rfind(beginning, 0) == 0;
    };
    std::unique_lock lock(mutex_);
    return recorded_.wait_for(lock, std::chrono::seconds(60), [&] {
        return std::count_if(calls_.begin(), calls_.end(), begins) >= count;
    });
}

void Recorder::record(std::string call) {
    if (meanwhile) {
        meanwhile();
    }
    const std::lock_guard lock(mutex_);
    calls_.push_back(std::move(call));
    threads_.push_back(std::this_thread::get_id());
    recorded_.notify_all();
}
