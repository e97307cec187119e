// What the camera's own thread does: waits for something to happen, tells the brain, and does what
// the brain says. Nothing here waits for anything else.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <poll.h>
#include <string>
#include <string_view>
#include <vector>

#include "host/brain/brain.h"
#include "host/camera.h"
#include "host/camera/disk.h"
#include "host/camera/inbox.h"
#include "host/camera/last_words.h"
#include "host/camera/lists.h"
#include "host/camera/running_worker.h"
#include "host/camera/shared_text.h"

namespace host {

class Loop {
  public:
    Loop(CameraOptions options, DiskWork work, std::shared_ptr<Inbox> inbox,
         std::shared_ptr<SharedText> banner);

    // Until it is told to leave.
    void run();

  private:
    // loop.cpp: what happens
    void wait();
    void catch_up();
    bool read_inbox();
    bool read_worker();
    void on(Asked& message);
    void on(ListAsked& message);
    void on(Told& message);
    void on(FileAnswer& message);
    void on(Listed& message);
    void on(brain::News& message);
    void on(ChildEnded& message);
    void on(Leave& message);
    Time wake_at() const;

    // carrying_out.cpp: what is to be done about it
    void carry_out();
    void carry_out(brain::Say& effect);
    void carry_out(brain::StartWorker& effect);
    void carry_out(brain::EndWorker& effect);
    void carry_out(FileWork& effect);
    void carry_out(brain::StateChanged& effect);
    void carry_out(brain::PictureCame& effect);
    void carry_out(brain::ShotChanged& effect);
    void carry_out(brain::ProblemCame& effect);
    void carry_out(brain::Reply& effect);
    void climb();
    void show(WireLine::Direction direction, std::string_view text);

    const CameraOptions options_;
    const std::shared_ptr<Inbox> inbox_;
    const std::shared_ptr<SharedText> banner_;
    const Time begun_;
    Time now_;
    bool leaving_ = false;
    std::string banner_told_;
    brain::Brain brain_;
    Disk disk_;
    std::unique_ptr<RunningWorker> worker_;
    LastWords last_words_;
    const Ear ear_;
    Lists lists_;
    RequestId last_request_ = 0;
    std::map<RequestId, std::function<void(const Answer&)>> waiting_;
};

}  // namespace host
