#include "host/camera/loop.h"

#include <algorithm>
#include <utility>

#include "host/camera/uptime.h"

namespace host {
namespace {

// For a worker that writes without end. Each takes as much as a pipe usually holds.
constexpr unsigned most_readings = 64;

// There is always something to do before; longer ones would not fit in poll()'s number.
constexpr Time longest_wait = std::chrono::hours(1);

constexpr std::string_view announcement = "camera-sim: simulated SDK, no real camera is driven";

int timeout(Time left) {
    return static_cast<int>(
        std::chrono::ceil<std::chrono::milliseconds>(std::min(left, longest_wait)).count());
}

}  // namespace

Loop::Loop(CameraOptions options, DiskWork work, std::shared_ptr<Inbox> inbox,
           std::shared_ptr<SharedText> banner)
    : options_(std::move(options)),
      inbox_(std::move(inbox)),
      banner_(std::move(banner)),
      begun_(uptime()),
      now_(begun_),
      brain_(options_.times == nullptr ? brain::Brain(options_.wishes)
                                       : brain::Brain(options_.wishes, *options_.times)),
      disk_(std::move(work), inbox_),
      ear_{[this](std::string_view line) {
               show(WireLine::Direction::from_worker, line);
               brain_.hear(line, now_);
               carry_out();
           },
           [this] {
               brain_.tell(brain::LineTooLong{worker_->run()}, now_);
               carry_out();
           },
           [this](std::string_view line) {
               show(WireLine::Direction::error, line);
               if (line == announcement) {
                   brain_.tell(brain::CameraIsSimulated{}, now_);
                   carry_out();
               } else {
                   last_words_.hear(line, now_);
               }
           }} {}

void Loop::run() {
    while (!leaving_) {
        wait();
        brain_.tell(brain::TimeOfDayIs{time_of_day()}, uptime());
        catch_up();
    }
}

Time Loop::wake_at() const {
    const Time at = std::min(brain_.wake_at(), lists_.wake_at());
    return worker_ ? std::min(at, worker_->wake_at()) : at;
}

void Loop::wait() {
    std::vector<pollfd> sources{{inbox_->descriptor(), POLLIN, {}}};
    if (worker_) {
        worker_->add_to(sources);
    }
    const Time wake = wake_at();
    const Time now = uptime();
    const Time left = wake == Time::max() ? Time::max() : std::max(wake - now, Time{});
    poll(sources.data(), static_cast<nfds_t>(sources.size()), timeout(left));
}

// A deadline strikes only once everything has been told that could be read at that time: the clock
// is looked at before each reading, and the last reading finds nothing.
void Loop::catch_up() {
    bool more = true;
    for (unsigned reading = 0; more && reading < most_readings; ++reading) {
        now_ = uptime();
        const bool heard = read_worker();
        more = read_inbox() || heard;
    }
    climb();
    lists_.strike(now_);
    brain_.pass(now_);
    carry_out();
}

bool Loop::read_worker() {
    if (!worker_) {
        return false;
    }
    worker_->write_on();
    const bool heard = worker_->read(now_, ear_);
    if (const char* flood = worker_->flood()) {
        brain_.tell(brain::WorkerFlooded{worker_->run(), flood}, now_);
        carry_out();
    }
    return heard;
}

bool Loop::read_inbox() {
    std::vector<Message> messages = inbox_->take();
    for (Message& message : messages) {
        std::visit([this](auto& one) { on(one); }, message);
        carry_out();
    }
    return !messages.empty();
}

void Loop::on(Asked& message) {
    waiting_[++last_request_] = std::move(message.answered);
    brain_.ask(last_request_, message.request, now_);
}

void Loop::on(ListAsked& message) {
    if (const auto number = lists_.ask(std::move(message.answered), now_)) {
        disk_.list({*number, brain_.state().folder, std::move(message.after), message.limit});
    }
}

void Loop::on(Told& message) {
    disk_.ask(std::move(message));
}

void Loop::on(FileAnswer& message) {
    brain_.tell(message, now_);
}

void Loop::on(Listed& message) {
    lists_.answer(message);
}

void Loop::on(brain::News& message) {
    const auto* started = std::get_if<brain::WorkerStarted>(&message);
    if (started != nullptr && worker_ && worker_->run() == started->run) {
        worker_->started();
    }
    const auto* none = std::get_if<brain::WorkerNotStarted>(&message);
    if (none != nullptr && worker_ && worker_->run() == none->run) {
        worker_.reset();
    }
    brain_.tell(message, now_);
}

// What it has written before its end is still in the pipes. Who else writes into them is not waited
// for. One that was given up, because nothing ended it in time, is at its end only now: what it
// brought waits for that.
void Loop::on(ChildEnded& message) {
    if (!worker_ || worker_->run() != message.run) {
        brain_.tell(brain::WorkerEnded{message.run, WorkerEnd::sigkill, message.status}, now_);
        return;
    }
    for (unsigned reading = 0; reading < most_readings && read_worker(); ++reading) {}
    const brain::WorkerEnded news{message.run, worker_->ended_by(), message.status,
                                  last_words_.before(now_)};
    worker_.reset();
    brain_.tell(news, now_);
}

void Loop::on(Leave&) {
    leaving_ = true;
}

}  // namespace host
