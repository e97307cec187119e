// Any lines of a worker, at any time, against the brain. The disk does what it is asked and says so
// when the input lets it; what the host asks for comes out of the input too.
//
// Each line of the input is a line of the worker, unless it begins with a byte from 1 to 9: then it
// is something else that happens.

#include "host/brain/brain.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <variant>

#include "tests/worker/fuzz/require.h"

namespace {

using namespace host::brain;
using host::FileWork;
using host::RequestId;
using host::Time;
using std::chrono::milliseconds;
using std::chrono::seconds;

// What a brain may hold on to, whatever the worker writes.
constexpr std::size_t most_effects = 4000;

class Around {
  public:
    Around() {
        tell(TimeOfDayIs{milliseconds(1'700'000'000'000)});
        ask(host::Connect{});
    }

    void line(std::string_view text) {
        if (text.empty() || text.front() == '\0' || text.front() > '\x09') {
            brain_.hear(text, now_);
            return work();
        }
        happen(text.front(), text.size() > 1 ? static_cast<std::uint8_t>(text[1]) : 0);
    }

    // Whatever came before, the end comes in time, and everybody has been answered.
    void end() {
        disk_answers_ = true;
        const RequestId end = ask(host::Shutdown{});
        after(seconds(40));
        require(answered_.count(end) == 1, "the end is told");
        require(answered_.size() == last_request_, "each request is answered");
        require(brain_.state().state == host::State::down, "the session is down at the end");
    }

  private:
    void happen(char what, std::uint8_t number) {
        switch (what) {
            case 1:
                return after(milliseconds(number * number));
            case 2: {
                host::Capture capture;
                capture.tag = std::string(1, static_cast<char>('a' + number % 4));
                capture.patience = seconds(number % 16);
                ask(capture);
                return;
            }
            case 3: {
                host::Configure wish;
                const char* const folders[] = {"/shots", "/a", "/b"};
                wish.folder = folders[number % 3];
                if (number % 2 == 0) {
                    wish.save_destination = static_cast<host::SaveDestination>(number / 2 % 3);
                }
                if (number % 5 == 0) {
                    wish.file_type = static_cast<host::FileType>(number / 5 % 4);
                }
                ask(wish);
                return;
            }
            case 4:
                ask(host::Connect{});
                return;
            case 5:
                ask(host::Disconnect{});
                return;
            case 6:
                ask(host::Cancel{std::string(1, static_cast<char>('a' + number % 4))});
                return;
            case 7:
                return tell(WorkerEnded{run_, host::WorkerEnd::gone, number});
            case 8:
                disk_answers_ = number % 2 == 0;
                return work();
            case 9:
                exists_ = number % 2 == 0;
                whole_ = number % 4 < 2;
                return;
            default:
                return;
        }
    }

    void tell(const News& news) {
        brain_.tell(news, now_);
        work();
    }

    RequestId ask(const host::Request& what) {
        brain_.ask(++last_request_, what, now_);
        work();
        return last_request_;
    }

    void after(Time duration) {
        const Time end = now_ + duration;
        for (int calls = 0; now_ < end; ++calls) {
            require(calls < 100'000, "the brain is content to wait");
            now_ = std::min(end, std::max(now_, brain_.wake_at()));
            brain_.tell(TimeOfDayIs{milliseconds(1'700'000'000'000) +
                                    std::chrono::duration_cast<milliseconds>(now_)},
                        now_);
            brain_.pass(now_);
            work();
        }
    }

    void work() {
        for (std::vector<Effect> effects = brain_.take(); !effects.empty();
             effects = brain_.take()) {
            require(effects.size() < most_effects, "one call has few effects");
            for (const Effect& effect : effects) {
                carry_out(effect);
            }
            while (disk_answers_ && !disk_.empty()) {
                const FileWork next = disk_.front();
                disk_.pop_front();
                answer(next);
            }
        }
        require(!told_ || *told_ == brain_.state(), "every change of state is told");
    }

    void carry_out(const Effect& effect) {
        if (const auto* start = std::get_if<StartWorker>(&effect)) {
            run_ = start->run;
            brain_.tell(WorkerStarted{run_, 4711}, now_);
            brain_.hear("CPP_WORKER|START", now_);
            brain_.hear("READY|OK", now_);
        } else if (const auto* say = std::get_if<Say>(&effect)) {
            // What a start needs; everything else is the input's.
            if (say->line.rfind("SET_DOWNLOAD_DIR|", 0) == 0) {
                brain_.hear(say->line.substr(4), now_);
            } else if (say->line == "PRIME") {
                brain_.hear("PRIME_DONE|OK", now_);
            } else if (say->line == "CAPTURE") {
                require(unfired_ == 0, "CAPTURE is said once for a shot");
                ++unfired_;
            }
        } else if (const auto* end = std::get_if<EndWorker>(&effect)) {
            require(end->run == run_, "the worker that is ended is the one that was started");
            brain_.tell(WorkerEnded{run_, host::WorkerEnd::quit, 0}, now_);
        } else if (const auto* work = std::get_if<FileWork>(&effect)) {
            disk_.push_back(*work);
        } else if (const auto* changed = std::get_if<StateChanged>(&effect)) {
            told_ = changed->state;
        } else if (const auto* shot = std::get_if<ShotChanged>(&effect)) {
            unfired_ -= shot->shot.status == host::ShotStatus::fired ? 1 : 0;
        } else if (const auto* came = std::get_if<PictureCame>(&effect)) {
            require(placed_.count(came->picture.id) == 1, "a picture that is told has a place");
        } else if (const auto* reply = std::get_if<Reply>(&effect)) {
            require(answered_.insert(reply->request).second, "a request is answered once");
        }
    }

    void answer(const FileWork& work) {
        if (const auto* open = std::get_if<host::OpenFolder>(&work)) {
            host::FolderOpened opened;
            opened.ticket = open->ticket;
            opened.folder = open->folder.front() == '/' ? open->folder : "/" + open->folder;
            brain_.tell(opened, now_);
        } else if (const auto* run = std::get_if<host::OpenRun>(&work)) {
            const std::string name = "run-" + std::to_string(++runs_);
            brain_.tell(host::RunOpened{run->ticket, name, run->folder + "/.incoming/" + name, 7},
                        now_);
        } else if (const auto* sweep = std::get_if<host::SweepRun>(&work)) {
            brain_.tell(host::RunSwept{sweep->ticket, {}, {}}, now_);
        } else if (const auto* one = std::get_if<host::Examine>(&work)) {
            brain_.tell(examine(*one), now_);
        } else if (const auto* place = std::get_if<host::Place>(&work)) {
            const auto found = examined_.find(place->ticket);
            require(found != examined_.end(), "what is placed was examined, and not placed before");
            host::Picture picture;
            picture.id = std::to_string(place->ticket);
            picture.shot = place->shot;
            picture.pair = place->pair;
            picture.kind = found->second.kind;
            picture.whole = found->second.whole;
            examined_.erase(found);
            placed_.insert(picture.id);
            brain_.tell(host::Placed{place->ticket, picture}, now_);
        } else if (const auto* look = std::get_if<host::LookAtFolder>(&work)) {
            brain_.tell(
                host::FolderLooked{look->ticket, exists_, true, true, std::uint64_t{1} << 40},
                now_);
        }
    }

    host::Examined examine(const host::Examine& work) {
        host::Examined found;
        found.ticket = work.ticket;
        const std::size_t dot = work.path.find_last_of('.');
        found.camera_name = work.path;
        found.stem = work.path.substr(0, dot);
        const std::string ending = dot == std::string::npos ? "" : work.path.substr(dot);
        found.kind = ending == ".ARW"   ? host::Kind::raw
                     : ending == ".JPG" ? host::Kind::developed
                                        : host::Kind::other;
        found.whole = whole_;
        found.verdict = !exists_                         ? host::Verdict::not_there
                        : seen_.insert(work.path).second ? host::Verdict::there
                                                         : host::Verdict::reported_before;
        if (found.verdict == host::Verdict::there) {
            examined_[work.ticket] = found;
        }
        return found;
    }

    Brain brain_{host::Wishes{}};
    Time now_ = seconds(1000);
    std::deque<FileWork> disk_;
    bool disk_answers_ = true;
    bool exists_ = true;
    bool whole_ = true;
    std::string run_;
    unsigned int runs_ = 0;
    int unfired_ = 0;
    std::optional<host::SessionState> told_;
    std::map<host::Ticket, host::Examined> examined_;
    std::set<std::string> placed_;
    std::set<std::string> seen_;
    std::set<RequestId> answered_;
    RequestId last_request_ = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Around around;
    std::string_view rest(reinterpret_cast<const char*>(data), size);
    while (!rest.empty()) {
        const std::size_t end = rest.find('\n');
        around.line(rest.substr(0, end));
        rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
    }
    around.end();
    return 0;
}
