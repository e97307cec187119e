#include "tether/rpc/writer.h"

#include <cerrno>
#include <condition_variable>
#include <optional>
#include <poll.h>
#include <string_view>
#include <thread>
#include <unistd.h>
#include <utility>

#include "host/process/mutex.h"

namespace rpc {

using host::Mutex;
using host::MutexLock;

namespace {

// False when nobody will read it any more.
bool write_out(int output, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(output, bytes.data(), bytes.size());
        if (count > 0) {
            bytes.remove_prefix(static_cast<std::size_t>(count));
        } else if (count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
            // Whoever started this process made it so.
            pollfd room{output, POLLOUT, 0};
            ::poll(&room, 1, -1);
        } else if (count < 0 && errno != EINTR) {
            return false;
        }
    }
    return true;
}

}  // namespace

class Writer::Shared {
  public:
    Shared(News news, const OutgoingLimits& limits) : news_(std::move(news)), outgoing_(limits) {}

    // Whether anything is to be written; `add` says what.
    template <typename Add>
    bool with(Add add) {
        bool taken = false;
        {
            const MutexLock lock(mutex_);
            if (broken_) {
                return false;
            }
            taken = add(outgoing_);
        }
        added_.notify_one();
        return taken;
    }

    bool is_full() {
        const MutexLock lock(mutex_);
        return outgoing_.is_full();
    }

    bool is_broken() {
        const MutexLock lock(mutex_);
        return broken_;
    }

    bool flush(std::chrono::nanoseconds patience) {
        const MutexLock lock(mutex_);
        while (!broken_ && outgoing_.bytes() > 0) {
            if (!mutex_.wait_until(written_, host::after(patience))) {
                return false;
            }
        }
        return !broken_;
    }

    // What is still to be written is written; nobody is told of it any more.
    void finish() {
        const MutexLock lock(mutex_);
        finished_ = true;
        added_.notify_one();
        while (telling_) {
            mutex_.wait(told_);
        }
    }

    // The thread.
    void write_all(int output) {
        while (const auto batch = next()) {
            if (!write_out(output, batch->bytes)) {
                give_up();
                return;
            }
            // Before it counts as written: who has waited for all to be written may end the camera.
            for (const std::string& id : batch->pictures) {
                tell([&] { news_.picture_written(id); });
            }
            count_written(*batch);
        }
    }

  private:
    std::optional<Outgoing::Batch> next() {
        const MutexLock lock(mutex_);
        Outgoing::Batch batch = outgoing_.take();
        while (batch.bytes.empty()) {
            if (finished_) {
                return std::nullopt;
            }
            mutex_.wait(added_);
            batch = outgoing_.take();
        }
        return batch;
    }

    void count_written(const Outgoing::Batch& batch) {
        bool room_again = false;
        {
            const MutexLock lock(mutex_);
            const bool was_full = outgoing_.is_full();
            outgoing_.written(batch);
            room_again = was_full && !outgoing_.is_full();
        }
        written_.notify_all();
        if (room_again) {
            tell(news_.changed);
        }
    }

    void give_up() {
        {
            const MutexLock lock(mutex_);
            broken_ = true;
        }
        written_.notify_all();
        tell(news_.changed);
    }

    // Whoever is told may be gone as soon as finish() has returned.
    template <typename News>
    void tell(const News& news) {
        {
            const MutexLock lock(mutex_);
            if (finished_) {
                return;
            }
            telling_ = true;
        }
        news();
        {
            const MutexLock lock(mutex_);
            telling_ = false;
        }
        told_.notify_all();
    }

    const News news_;
    Mutex mutex_;
    std::condition_variable added_;
    std::condition_variable written_;
    std::condition_variable told_;
    Outgoing outgoing_ HOST_GUARDED_BY(mutex_);
    bool broken_ HOST_GUARDED_BY(mutex_) = false;
    bool finished_ HOST_GUARDED_BY(mutex_) = false;
    bool telling_ HOST_GUARDED_BY(mutex_) = false;
};

Writer::Writer(int output, News news, const OutgoingLimits& limits)
    : shared_(std::make_shared<Shared>(std::move(news), limits)) {
    std::thread([shared = shared_, output] { shared->write_all(output); }).detach();
}

Writer::~Writer() {
    shared_->finish();
}

void Writer::answer(std::string text) {
    shared_->with([&text](Outgoing& outgoing) {
        outgoing.add_answer(std::move(text));
        return true;
    });
}

void Writer::state(std::string text) {
    shared_->with([&text](Outgoing& outgoing) {
        outgoing.add_state(std::move(text));
        return true;
    });
}

bool Writer::picture(std::string text, std::string id) {
    return shared_->with([&text, &id](Outgoing& outgoing) {
        return outgoing.add_picture(std::move(text), std::move(id));
    });
}

void Writer::news(std::string text) {
    shared_->with([&text](Outgoing& outgoing) { return outgoing.add_news(std::move(text)); });
}

void Writer::line(const std::function<std::string(std::uint64_t dropped)>& text) {
    shared_->with([&text](Outgoing& outgoing) {
        outgoing.add_line(text);
        return true;
    });
}

bool Writer::is_full() {
    return shared_->is_full();
}

bool Writer::client_is_gone() {
    return shared_->is_broken();
}

bool Writer::flush(std::chrono::nanoseconds patience) {
    return shared_->flush(patience);
}

}  // namespace rpc
