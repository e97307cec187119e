// What every host must do with a worker, decided in one place: a pure state machine. It is told
// lines, news of the process, what the disk found, requests and the time, and says what is to be
// done. It has no clock, no thread and no file, and is not safe to share between threads.
//
// The brain believes the disk and the fence. A line is a hint: it can be forged by a file's name or
// a camera's.
#pragma once

#include <deque>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "host/brain/effects.h"
#include "host/brain/news.h"
#include "host/brain/session/fence.h"
#include "host/brain/session/held_lines.h"
#include "host/brain/session/restarts.h"
#include "host/brain/shots/shot_in_hand.h"
#include "host/brain/shots/stems.h"
#include "host/brain/standing_problems.h"
#include "host/brain/times.h"
#include "host/values/file_work.h"
#include "host/values/requests.h"
#include "host/values/session_state.h"

namespace host::brain {

class Brain {
  public:
    // `times` must stay as long as the brain.
    explicit Brain(Wishes wishes);
    Brain(Wishes wishes, const Times& times);
    Brain(const Brain&) = delete;
    Brain& operator=(const Brain&) = delete;

    // A line of the worker without its line feed, read at that time. No call may go back in time.
    void hear(std::string_view line, Time at);
    void tell(const News& news, Time at);
    void tell(const FileAnswer& answer, Time at);
    void ask(RequestId request, const Request& what, Time at);

    // Deadlines strike here and nowhere else: called once everything that could be read has been
    // told, after every batch and at wake_at() at the latest. More than 2 s between two calls of
    // any kind means, while there is a worker, that this process or the machine stood still.
    void pass(Time now);
    Time wake_at() const;

    // What is to be done since the last call, in this order.
    std::vector<Effect> take();

    SessionState state() const;

    // Behind "CPP_WORKER|", empty before the worker has said it.
    const std::string& banner() const {
        return banner_;
    }

  private:
    // launching: nothing heard from the system yet. silent: runs, and has not said READY.
    // leaving: on the ladder.
    enum class Worker { none, making_run, launching, silent, up, leaving };

    struct Waiting {
        RequestId request;
        Time deadline;
    };

    struct Opening {
        Fence::Number fence = 0;
        Time deadline = never;
        bool connected = false;
        bool already = false;          // a handle was out before
        std::optional<FileType> type;  // it may be told before the session
        std::optional<Problem> failure;
    };

    // A destination sent again, and the fence behind it: with a session it is answered.
    struct Probe {
        Fence::Number fence = 0;  // 0: none under way
        bool again = false;       // a loss was heard meanwhile: it says nothing any more
        bool connected = false;   // a CONNECTED was heard meanwhile
        bool came_back = false;   // or before, and this asks once more
    };

    struct Settling {
        bool type_is_next = false;
        bool opening = false;  // the CONNECTED before it has not been proven by anything yet
        bool already = false;
        unsigned int asked_again = 0;
        Fence::Number fence = 0;  // 0: waits to ask again
        bool again = false;       // the session was lost or came back meanwhile
    };

    // One file from its report to its place.
    struct Report {
        std::string run;
        Time heard{};
        std::uint64_t session = 0;  // that was the latest one when it was heard
        std::uint64_t window = 0;   // the shot that was waiting for files when it was heard
        bool placing = false;
        bool doubted = false;
        Examined file;
        std::optional<std::uint64_t> shot;  // whose it is, once that is decided
        Stem under;                         // the same
    };

    struct Configuring {
        enum class Step {
            turn,
            fencing,
            opening_folder,
            folder_opened,
            opening_run,
            moving,
            settings
        };
        RequestId request = 0;
        Configure wish;
        Time deadline = never;
        Step step = Step::turn;
        Fence::Number fence = 0;
        Ticket ticket = 0;
        std::string folder;
        RunOpened run;
        bool echoed = false;
        std::optional<Problem> refusal;
        std::optional<Problem> failure;       // why the folder was not changed
        std::optional<Problem> stood_before;  // of the same code
    };

    struct Ending {
        std::vector<Waiting> requests;
        Time files_until = never;
        Time stuck_at = never;
        bool laddering = false;
        Ended how;
    };

    struct Run {
        std::string name;
        std::string folder;
        std::string staging;
    };

    using Task = std::variant<ShotInHand, Configuring>;

    // brain.cpp: time
    void advance(Time at);
    void believe_lines();
    void strike();
    void strike_state();
    void go_on();
    void excuse_the_stop();
    void give_up_start();
    bool stands_still() const;
    void fence_when_idle();

    // state.cpp
    void enter(State state);
    void tell_state();
    void forget_session();

    // problems.cpp
    void raise(const Problem& problem);
    void raise_camera_problem(const Problem& problem);
    void clear(Code code);
    void clear_camera_problems();
    void clear_session_problems();
    void mention(const Problem& problem);
    Problem standing_in_the_way() const;
    void look_at_room(std::uint64_t room);

    // lines.cpp: what the worker says
    void obey(const HeldLine& line);
    void hear_banner(std::string_view text);
    void hear_log(std::string_view text);
    void hear_status(std::string_view text);
    void hear_error(std::string_view text);
    void hear_error_while_opening(std::string_view text, std::optional<std::uint32_t> code);
    void hear_fence();

    // session/starting.cpp
    void begin();
    void open_run();
    void hear_ready(std::string_view text);
    void hear_download_dir(std::string_view text);
    void prepared();
    void on(const WorkerStarted& news);
    void on(const WorkerNotStarted& news);
    void on(const RunOpened& answer);
    void on(const RunNotOpened& answer);

    // session/folder.cpp
    Ticket open_folder(const std::string& folder);
    void on(const FolderOpened& answer);
    void on(const FolderNotOpened& answer);
    void on(const FolderLooked& answer);
    void clear_folder_problems();
    void close_folder_unless_used(const std::string& folder);

    // session/restarting.cpp: a worker that is gone, hangs or floods
    void give_up_worker(const Problem& problem);
    void climb(Time rung);
    void lose_session(const Problem& problem);
    void replace_worker();
    void abandon_worker();
    void abandoned_ended(const std::string& started_for);
    void leave_run();
    void sweep_left_runs();
    void go_down(const Problem& problem, Time until);
    void on(const WorkerEnded& news);
    void on(const WorkerFlooded& news);
    void on(const LineTooLong& news);
    void on(const WorkerInputFull& news);
    void on(const CameraIsSimulated& news);
    void on(const FolderWaitedFor& news);
    void on(const TimeOfDayIs& news);

    // session/opening.cpp
    void open();
    void judge_opening();
    void fail_session(const Problem& problem);
    void close();
    void closed();
    void hear_connected(std::string_view text);

    // session/settling.cpp
    void settle(bool after_opening);
    void ask_destination();
    void ask_type();
    void round_over();
    void destination_round_over();
    void type_round_over();
    void ask_again();
    void settled();
    void type_settled();
    void no_session_behind_it();
    void miss_card();
    bool destination_is_settled() const;
    void hear_save_dest(std::string_view text);
    void hear_file_type(std::string_view text);
    void hear_pair_refused(std::uint32_t code);
    bool type_is_taken() const;

    // session/losing.cpp
    void hear_disconnected(std::string_view text);
    void probe();
    void probed();
    void lose();

    // requests.cpp
    void on_request(RequestId id, const Start& request);
    void on_request(RequestId id, const Connect& request);
    void on_request(RequestId id, const Disconnect& request);
    void on_request(RequestId id, const Capture& request);
    void on_request(RequestId id, const Cancel& request);
    void on_request(RequestId id, const Configure& request);
    void on_request(RequestId id, const Shutdown& request);
    void reply(RequestId id, Answer answer);
    void reply_all(std::vector<Waiting>& waiting, const Answer& answer);
    void refuse(ShotInHand& hand, Problem why);
    void refuse_queued(const Problem& why);
    void strike_requests();
    void let_camera_go();

    // shots/turns.cpp: captures and settings, one at a time
    void take_turn();
    std::size_t unfired() const;
    bool quiet() const;

    // shots/shots.cpp
    void shot_further();
    void fire();
    void fired();
    void hear_captured(std::string_view text);
    void strike_shot();
    Time files_deadline() const;
    Time shot_limit() const;
    Time end_of_look() const;
    Time shot_deadline() const;
    Time end_of_doubt() const;
    bool has_all_files() const;
    std::size_t files_under_way() const;

    // shots/shot_over.cpp
    void finish_shot(const std::optional<Problem>& why);
    void give_up_shot(const Problem& why);
    void judge_shot(const std::optional<Problem>& why);
    void blame(Problem problem);
    void tell_shot_over(const ShotInHand& hand);

    // shots/reports.cpp
    void hear_downloaded(std::string_view text);
    void on(const Examined& answer);
    void on(const Placed& answer);
    void on(const NotPlaced& answer);
    void on(const RunSwept& answer);
    void place(Ticket ticket, Report& report, const Stem& under);
    void show(const std::vector<Picture>& pictures);
    void drop_report(Ticket ticket);
    static std::string key_of(const Report& report);
    void complain(const Report& report, Problem problem);
    void look_in_old_runs();

    // shots/attribution.cpp: whose file is it
    void attribute(Ticket ticket, Report& report);
    void accept(Ticket ticket, Report& report);
    void leave_unasked(Ticket ticket, Report& report);
    void doubt(Ticket ticket, Report& report);
    bool doubt_with_other_half(Report& report);
    void believe_doubted();
    void reject_doubted();
    void name_pair(Ticket ticket, Report& report, Stem stem);
    bool place_with_other_half(Ticket ticket, Report& report);
    template <typename Settle>
    void settle_doubted(Settle settle);

    // session/configuring.cpp, session/moving.cpp
    void configure_further();
    void take_wishes();
    void settle_wishes();
    bool in_force_or_known() const;
    void give_configuring_up();
    void worker_lost_while_configuring();
    void end_while_configuring();
    void fence_before_moving();
    void folder_opened_to_move(const FolderOpened& answer);
    void open_run_to_move();
    void run_opened_to_move(const RunOpened& answer);
    void folder_refused(std::optional<std::uint32_t> code);
    void moved();
    void move_failed(const Problem& problem);
    void adopt_folder();
    static bool fits_in_a_command(const std::string& folder);
    static Problem path_too_long();
    void configured();
    void take_failure_back(const Configuring& done);

    // session/ending.cpp
    void end_further();
    void strike_ending();
    void excuse_ending();
    void ended();

    // disk.cpp
    Ticket ask_disk(FileWork work, Time patience);
    void sweep(const std::string& run, bool over);
    void disk_answered();
    void strike_disk();

    void do_now(Effect effect) {
        effects_.push_back(std::move(effect));
    }
    void say(std::string line);
    Fence::Number fence();

    const Times& times_;
    std::vector<Effect> effects_;
    Time now_{};
    std::optional<TimeOfDay> day_begins_;  // the time of day less the brain's
    Fence::Number after_stop_ = 0;
    Time still_until_ = Time::min();

    // The session.
    State state_ = State::down;
    Time deadline_ = never;  // of the state
    bool dirty_ = false;
    bool wanted_ = false;  // a camera is
    bool was_ready_ = false;
    bool shut_ = false;  // for good
    bool simulated_ = false;
    std::optional<std::string> camera_;
    std::string name_heard_;
    Setting<SaveDestination> destination_;
    Setting<FileType> type_;
    StandingProblems problems_;
    Opening opening_;
    Settling settling_;
    Probe probe_;
    Fence::Number closing_ = 0;
    std::size_t failures_ = 0;
    bool loss_in_doubt_ = false;  // a probe found a session, but a CONNECTED may still come
    // What was answered to the destination or type that was asked last.
    bool answered_ = false;
    std::optional<SaveDestination> destination_answer_;
    std::optional<std::uint32_t> refusal_;
    bool not_connected_ = false;
    std::optional<std::uint32_t> pair_refusal_;  // the camera sends one half of a pair only

    // The worker.
    Worker worker_ = Worker::none;
    std::string started_for_;  // the run by which the system knows it, wherever it was moved to
    Run run_;
    std::vector<Run> old_runs_;   // of the same worker, before it was moved
    std::vector<Run> left_runs_;  // of workers that are gone, to be swept after their last report
    // Of workers that cannot be ended, each by the run that it was started for: swept if one ends
    // after all.
    std::deque<std::pair<std::string, std::vector<Run>>> abandoned_;
    Ticket run_ticket_ = 0;
    std::int64_t process_ = 0;
    std::string banner_;
    std::optional<Problem> why_not_starting_;
    Problem last_loss_;
    HeldLines held_;
    Fence fence_;
    Fence::Number prepare_ = 0;
    bool prepared_ = false;
    bool echoed_ = false;
    Restarts restarts_;
    unsigned int restarts_told_ = 0;
    bool replaces_ = false;

    // The folder.
    std::string folder_;
    bool folder_open_ = false;
    Ticket folder_ticket_ = 0;
    std::optional<Problem> folder_waited_for_;
    std::string name_;
    Time patience_;
    Time expires_;
    std::deque<std::uint64_t> last_sizes_;

    // The disk.
    Ticket last_ticket_ = 0;
    std::deque<Time> disk_patience_;  // one for each answer that is due
    Time disk_deadline_ = never;
    bool disk_stuck_ = false;
    std::map<Ticket, Report> reports_;
    bool missed_reports_ = false;
    std::map<std::string, Stem>
        not_placed_;          // by run and name: whose they are, should they come again
    std::size_t sweeps_ = 0;  // under way

    // Requests and shots.
    std::vector<Waiting> starts_;
    std::vector<Waiting> connects_;
    std::vector<Waiting> disconnects_;
    bool let_go_now_ = false;
    Time let_go_by_ = never;
    std::optional<Ending> ending_;
    Ended last_end_;
    std::deque<Task> queue_;
    std::optional<ShotInHand> shot_;
    std::optional<Configuring> configuring_;
    std::uint64_t last_shot_ = 0;
    Fence::Number last_capture_ = 0;
    Stems stems_;
    std::uint64_t sessions_ = 0;  // begun so far
    std::string last_stem_;       // of a shot
    bool after_empty_shot_ = false;
    Time late_until_{};
    Time at_{};  // when the line that is being obeyed was read
};

}  // namespace host::brain
