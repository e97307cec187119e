#include "simulator/sdk/delivery.h"

#include <algorithm>
#include <array>
#include <deque>
#include <utility>

#include "simulator/camera/state.h"
#include "simulator/sdk/journal.h"
#include "simulator/sdk/text.h"
#include "simulator/sdk/threads.h"

namespace camera_sim {
namespace {

struct Notice {
    IDeviceCallback* application;
    std::string line;  // of the journal
    std::function<void(IDeviceCallback&)> call;
};

struct Lane {
    const char* name;
    std::thread thread;
    std::deque<Notice> queue;
    std::condition_variable queued;
    bool delivering = false;
    bool ending = false;
};

// Never destroyed: callbacks may pour in while the process ends.
auto& g_lanes = *new std::array<Lane, 8>{{{"sdk-1", {}, {}, {}},
                                          {"sdk-2", {}, {}, {}},
                                          {"sdk-3", {}, {}, {}},
                                          {"sdk-4", {}, {}, {}},
                                          {"sdk-5", {}, {}, {}},
                                          {"sdk-6", {}, {}, {}},
                                          {"sdk-7", {}, {}, {}},
                                          {"sdk-8", {}, {}, {}}}};
int g_lane SIM_ANNOTATION(guarded_by(g_lock)) = 0;
bool g_closed SIM_ANNOTATION(guarded_by(g_lock)) = false;

void deliver(Lane& lane) {
    name_thread(lane.name);
    Hold hold;
    for (;;) {
        while (lane.queue.empty() && !lane.ending) {
            hold.wait(lane.queued);
        }
        if (lane.queue.empty()) {
            return;
        }
        Notice notice = std::move(lane.queue.front());
        lane.queue.pop_front();
        lane.delivering = true;
        journal(Clock::now(), std::nullopt, notice.line, "-");
        hold.without([&notice] {
            notice.call(*notice.application);
            notice.call = nullptr;  // what it lent is gone when the application has returned
        });
        lane.delivering = false;
        g_changed.notify_all();
    }
}

void queue(std::string line, std::function<void(IDeviceCallback&)> call) SIM_REQUIRES(g_lock) {
    Lane& lane = g_lanes[static_cast<std::size_t>(g_lane)];
    if (state().application == nullptr || g_closed) {
        return;
    }
    if (!lane.thread.joinable()) {
        lane.thread = start_thread([&lane] { deliver(lane); });
    }
    lane.queue.push_back({state().application, std::move(line), std::move(call)});
    lane.queued.notify_one();
}

bool idle(const Lane& lane) {
    return lane.queue.empty() && !lane.delivering;
}

}  // namespace

namespace callback {

void connected(CrInt32 version) {
    queue("OnConnected " + std::to_string(version), [version](IDeviceCallback& application) {
        application.OnConnected(static_cast<DeviceConnectionVersioin>(version));
    });
}

void disconnected(CrInt32u reason) {
    queue("OnDisconnected " + hex(reason),
          [reason](IDeviceCallback& application) { application.OnDisconnected(reason); });
}

void properties(std::vector<CrInt32u> codes) {
    std::string line = "OnPropertyChangedCodes";
    for (const CrInt32u code : codes) {
        line += " " + hex(code, 4);
    }
    const auto count = static_cast<CrInt32u>(codes.size());
    queue(std::move(line), [codes = std::move(codes), count](IDeviceCallback& application) mutable {
        CrInt32u none = 0;  // a notice without codes still has a place to point to
        application.OnPropertyChangedCodes(count, codes.empty() ? &none : codes.data());
    });
}

void null_properties(CrInt32u count) {
    queue("OnPropertyChangedCodes null " + std::to_string(count),
          [count](IDeviceCallback& application) {
              application.OnPropertyChangedCodes(count, nullptr);
          });
}

void download(std::optional<std::string> name, CrInt32u type) {
    std::string line = "OnCompleteDownload " + (name ? in_quotes(*name) : "null") + " " + hex(type);
    queue(std::move(line), [name = std::move(name), type](IDeviceCallback& application) mutable {
        application.OnCompleteDownload(name ? name->data() : nullptr, type);
    });
}

void warning(CrInt32u code) {
    queue("OnWarning " + hex(code),
          [code](IDeviceCallback& application) { application.OnWarning(code); });
}

void error(CrInt32u code) {
    queue("OnError " + hex(code),
          [code](IDeviceCallback& application) { application.OnError(code); });
}

void crowd(CrInt32u files) {
    for (int thread = 0; thread < static_cast<int>(g_lanes.size()); ++thread) {
        const DeliveringThread from(thread);
        queue("OnCompleteDownload of " + std::to_string(files) + " files",
              [thread, files](IDeviceCallback& application) {
                  for (CrInt32u number = 0; number < files; ++number) {
                      std::string name =
                          std::to_string(thread) + "-" + std::to_string(number) + ".JPG";
                      application.OnCompleteDownload(name.data(), 0xFFFFFFFF);
                  }
              });
    }
}

}  // namespace callback

int delivering_thread() {
    return g_lane;
}

DeliveringThread::DeliveringThread(int thread) : before_(std::exchange(g_lane, thread)) {}

DeliveringThread::~DeliveringThread() {
    g_lane = before_;
}

bool all_delivered() {
    return std::all_of(g_lanes.begin(), g_lanes.end(), idle);
}

void wait_for_delivery(Hold& hold) {
    while (!all_delivered()) {
        hold.wait(g_changed);
    }
}

void open_delivery() {
    g_closed = false;
}

void end_delivery(Hold& hold) {
    g_closed = true;
    for (Lane& lane : g_lanes) {
        lane.ending = true;
        lane.queued.notify_one();
        if (lane.thread.joinable()) {
            hold.without([&lane] { lane.thread.join(); });
        }
        lane.thread = std::thread();
        lane.ending = false;
    }
    g_changed.notify_all();
}

}  // namespace camera_sim
