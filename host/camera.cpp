#include "host/camera.h"

#include <condition_variable>
#include <thread>
#include <utility>

#include "host/camera/inbox.h"
#include "host/camera/loop.h"
#include "host/camera/shared_text.h"
#include "host/camera/signals.h"
#include "host/pictures/store.h"
#include "host/process/mutex.h"

namespace host {
namespace {

// The answer to a request, for the thread that waits for it.
class Awaited {
  public:
    void set(const Answer& answer) HOST_EXCLUDES(mutex_) {
        {
            const MutexLock lock(mutex_);
            answer_ = answer;
        }
        set_.notify_all();
    }
    Answer wait() HOST_EXCLUDES(mutex_) {
        const MutexLock lock(mutex_);
        while (!answer_) {
            mutex_.wait(set_);
        }
        return *answer_;
    }

  private:
    Mutex mutex_;
    std::condition_variable set_;
    std::optional<Answer> answer_ HOST_GUARDED_BY(mutex_);
};

std::optional<Problem> problem_in(const Answer& answer) {
    const auto* problem = std::get_if<Problem>(&answer);
    return problem == nullptr ? std::nullopt : std::optional(*problem);
}

DiskWork work_on_disk(const std::shared_ptr<Inbox>& inbox) {
    pictures::Options options;
    options.folder_waited_for = [inbox](Ticket ticket, const Problem& problem) {
        inbox->post(brain::News(brain::FolderWaitedFor{ticket, problem}));
    };
    const auto store = std::make_shared<pictures::Store>(std::move(options));
    return {[store](const FileWork& work) { return store->work(work); },
            [store](const ListWork& list) {
                return store->is_open(list.folder)
                           ? std::optional(store->list(list.folder, list.after, list.limit))
                           : std::nullopt;
            },
            [store] {
                store->hurry();
            }};
}

}  // namespace

class Camera::Machinery {
  public:
    explicit Machinery(CameraOptions options)
        : loop_(std::move(options), work_on_disk(inbox_), inbox_, banner_), thread_([this] {
              block_signals();
              loop_.run();
          }) {}

    ~Machinery() {
        inbox_->post(Leave{});
        thread_.join();
    }

    Machinery(const Machinery&) = delete;
    Machinery& operator=(const Machinery&) = delete;

    void post(Message message) {
        inbox_->post(std::move(message));
    }

    std::shared_ptr<Awaited> ask(Request request) {
        auto awaited = std::make_shared<Awaited>();
        post(Asked{std::move(request), [awaited](const Answer& answer) {
                       awaited->set(answer);
                   }});
        return awaited;
    }

    Answer answer_to(Request request) {
        return ask(std::move(request))->wait();
    }

    std::string banner() const {
        return banner_->get();
    }

  private:
    const std::shared_ptr<Inbox> inbox_ = std::make_shared<Inbox>();
    const std::shared_ptr<SharedText> banner_ = std::make_shared<SharedText>();
    Loop loop_;           // the thread's alone while it runs
    std::thread thread_;  // last: it uses the others
};

Camera::Camera(CameraOptions options)
    : machinery_(std::make_unique<Machinery>(std::move(options))) {}

Camera::~Camera() {
    machinery_->answer_to(Shutdown{});
}

void Camera::ask(Request request, std::function<void(const Answer&)> answered) {
    machinery_->post(Asked{std::move(request), std::move(answered)});
}

std::optional<Problem> Camera::start() {
    return problem_in(machinery_->answer_to(Start{}));
}

std::optional<Problem> Camera::connect() {
    const auto connected = machinery_->ask(Connect{});
    if (std::optional<Problem> problem = start()) {
        return problem;
    }
    return problem_in(connected->wait());
}

Shot Camera::capture(Capture request) {
    Answer answer = machinery_->answer_to(std::move(request));
    if (auto* shot = std::get_if<Shot>(&answer)) {
        return std::move(*shot);
    }
    Shot refused;
    refused.status = ShotStatus::refused;
    if (const std::optional<Problem> problem = problem_in(answer)) {
        refused.problems.push_back(*problem);
    }
    return refused;
}

Ended Camera::shutdown(std::optional<Time> patience) {
    const Answer answer = machinery_->answer_to(Shutdown{patience});
    const auto* ended = std::get_if<Ended>(&answer);
    return ended == nullptr ? Ended{} : *ended;
}

void Camera::told(std::string id) {
    machinery_->post(Told{std::move(id)});
}

void Camera::pictures(std::string after, std::size_t limit,
                      std::function<void(const PicturesAnswer&)> answered) {
    machinery_->post(ListAsked{std::move(after), limit, std::move(answered)});
}

std::string Camera::banner() const {
    return machinery_->banner();
}

}  // namespace host
