// Holds what a brain does against what is promised of it, by what really happened.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "host/brain/effects.h"
#include "host/values/requests.h"
#include "tests/host/afternoons/agenda.h"
#include "tests/host/afternoons/model/camera.h"
#include "tests/host/afternoons/model/disk.h"
#include "tests/host/afternoons/model/worker.h"

namespace afternoons {

struct Failure {
    std::string guarantee;  // "G1" to "G10"
    std::string text;
};

// One CAPTURE that was sent.
struct Fired {
    Number number = 0;
    Time at{};
    std::uint64_t brain = 0;
    std::uint64_t shot = 0;
    std::string tag;
    std::string run;
    std::optional<Time> over;
    host::ShotStatus status = host::ShotStatus::fired;
    std::optional<host::FileType> type;  // as it was told
    std::optional<host::SaveDestination> destination;
    bool empty = false;  // no picture was said to be its own when it was over
};

class Witness {
  public:
    Witness(const Agenda& agenda, const Camera& camera, Disk& disk);

    // What happens around the brain.
    void brain_begins(std::uint64_t number);
    void brain_ends();
    void brain_stands_still(Time until);
    void asked(host::RequestId id, const host::Request& what);
    void worker_started(const std::string& run, const Worker* worker);
    void worker_ended(const std::string& run);
    void worker_news(const std::string& run);  // that its brain has heard of
    void pressed(const Press& press) {
        presses_[press.number] = press;
    }
    void heard(const std::string& line, bool forged);

    // What the brain does.
    void says(const std::string& line, bool to_somebody);
    void starts_worker(const std::string& run);
    void ends_worker(const host::brain::EndWorker& work);
    void tells(const host::SessionState& state);
    void tells(const host::Picture& picture, bool somebody_listens);
    void tells(const host::Shot& shot);
    void tells(const host::Problem& problem);
    void replies(host::RequestId id, const host::Answer& answer);
    void batch_over(const host::SessionState& state);
    void time_passes();

    // At the end.
    void must_be_ready(const host::SessionState& state);
    void must_be_complete(host::RequestId capture);
    void must_be_ended(host::RequestId shutdown);
    void must_be_shut();
    void look_back();

    void wrong(const std::string& guarantee, const std::string& text);

    std::optional<Failure> failure;
    std::optional<Number> last_capture;
    bool forging_may_slip_through = false;  // reports come later than anybody waits for them
    bool deaf_ever = false;
    std::size_t pictures_told = 0;
    std::size_t shots_complete = 0;

  private:
    struct Asked {
        host::RequestId id = 0;
        host::Request what;
        Time at{};
        Time limit{};
        std::optional<Time> answered;
        std::optional<host::Answer> answer;
        bool in_turn = false;  // waits for those before it
    };
    struct Shown {
        host::Picture picture;
        Number file = 0;
        std::uint64_t brain = 0;
    };
    struct Stop {
        Time from{};
        Time until{};
    };

    Time allowed(Time deadline) const;
    Time time_out(const Asked& asked) const;
    const Fired* fired_as(std::uint64_t shot, const std::string& tag) const;
    void check_camera(const host::SessionState& state);
    void check_settings(const host::SessionState& state);
    void check_lost();
    void check_whose(const Shown& shown);
    bool looks_old(const Press& press) const;
    void check_pairs();
    bool is_written_to(const std::string& folder) const;
    void check_files();
    void check_in_force(const host::SessionState& state);
    void check_over(const host::Shot& shot);
    void look_for_late_answers();
    Time turn_of(const Asked& asked) const;
    bool had_no_time(const Asked& asked) const;
    const File* own_file(const Fired& fired, Time from, Time until) const;
    const Press* press_of(Number file) const;
    bool stands(host::Code code) const;

    const Agenda& agenda_;
    const Camera& camera_;
    Disk& disk_;
    std::uint64_t brain_ = 0;
    std::vector<Asked> asked_;
    std::vector<Stop> stops_;
    std::optional<host::SessionState> told_;
    std::vector<Fired> fired_;
    std::optional<Number> unbound_;
    std::map<Number, Press> presses_;
    std::vector<Shown> shown_;
    std::map<std::string, host::Picture> by_id_;
    std::vector<std::string> problems_;
    std::map<std::uint64_t, host::Shot> over_;

    // The worker at work.
    std::string run_;
    const Worker* worker_ = nullptr;
    bool told_to_leave_ = false;
    std::size_t fences_said_ = 0;
    std::size_t fences_heard_ = 0;
    std::size_t capture_fence_ = 0;
    bool moved_before_ = false;
    Time ready_since_{};
    std::set<std::string> cameras_;  // by the names that the worker said
    bool probe_due_ = false;         // a loss was heard, and not asked about since
    Time next_look_{};
    std::vector<Time> losses_;
    Time urged_{};  // the latest request that makes a try come at once
    std::size_t failures_ = 0;
    Time disconnect_said_{};
    std::optional<Time> ending_until_;
    bool ending_ = false;
    bool ended_ = false;
    std::set<std::string> let_go_;  // tags that were cancelled
    Time camera_let_go_{};
};

}  // namespace afternoons
