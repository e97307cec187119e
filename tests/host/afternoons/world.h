// The brain's surroundings in one afternoon: processes, disk, camera, host and clocks.
#pragma once

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "host/brain/brain.h"
#include "tests/host/afternoons/afternoon.h"
#include "tests/host/afternoons/model/disk.h"
#include "tests/host/afternoons/model/worker.h"
#include "tests/host/afternoons/witness.h"

namespace afternoons {

class World final : private Processes {
  public:
    explicit World(bool tell_it);
    ~World() override;

    void play(const Story& story);
    Outcome outcome();

  private:
    // A worker's process, and what watches it for its brain.
    class Process final : public Surroundings {
      public:
        Process(World& world, std::string run, Number number, const std::string& staging,
                Nature nature);

        void climb(Time rung);

        void line(const std::string& text, bool forged) override;
        void ended(int status) override;
        Press* pressed(std::optional<Number> capture) override;
        File* landed(const Press& press, const std::string& name, host::Kind kind, bool whole,
                     const std::string& folder) override;
        bool taken(const std::string& folder, const std::string& stem) override;

        World& world;
        std::string run;
        Number number;
        std::uint64_t brain;  // whose child it is
        host::WorkerEnd by = host::WorkerEnd::gone;
        std::unique_ptr<Worker> worker;
    };

    struct Line {
        std::string run;
        std::string text;
        bool forged = false;
    };
    struct AskedFor {
        host::RequestId id;
        host::Request what;
    };
    using Input = std::variant<Line, host::brain::News, host::FileAnswer, AskedFor>;

    // world.cpp
    void run_until(Time end);
    void run_for(Time duration) {
        run_until(agenda_.now() + duration);
    }
    void hear_all();
    void deliver(const Input& input);
    void tell_time();
    void carry_out();
    void carry_out(const host::brain::Effect& effect);
    void start_worker(const host::brain::StartWorker& work);
    void begin_brain();
    void kill_brain();
    void note(const std::string& text);
    Process* at_work();

    // happenings.cpp
    void happen(const Event& event);
    bool happens_to_host(const Event& event);
    bool wishes(const Event& event);
    bool happens_to_camera(const Event& event);
    bool changes_settings(const Event& event);
    bool changes_camera(const Event& event);
    bool tells_of_camera(const Event& event);
    bool happens_to_files(const Event& event);
    bool happens_to_worker(const Event& event);
    void happens_to_disk(const Event& event);
    host::RequestId ask(const host::Request& what);
    void capture(int patience, int expires);
    void shut_down(int patience);
    void swap();
    void write_many(Worker& worker, int kind) const;
    FileFault& next_file();
    void stand_still(Time duration);
    void camera_back();
    void flap(int times);
    void for_a_while(bool& what, int length);

    // finale.cpp
    void finale();
    void heal();

    void answer(const host::FileAnswer& answer) override;
    bool holds_lock(const std::string& run) const override;
    bool is_written_to(const std::string& staging) const override;
    void terminate(const std::string& run) override;
    void kill(const std::string& run) override;
    void wrong(const std::string& guarantee, const std::string& text) override;

    bool tell_it_;
    std::vector<std::string> told_;
    Agenda agenda_;
    Camera camera_;
    Disk disk_;
    Witness witness_;
    std::deque<Press> presses_;
    std::vector<std::unique_ptr<Process>> processes_;
    std::unique_ptr<host::brain::Brain> brain_;
    std::deque<Input> inbox_;
    Time brain_still_until_{};
    Time brain_starts_{};
    std::chrono::milliseconds day_{1'700'000'000'000};
    Nature next_nature_ = Nature::usual;
    host::RequestId last_request_ = 0;
    std::vector<std::string> tags_;
    bool hearing_ = true;
    bool connect_wanted_ = false;
    bool shut_ = false;
    bool all_well_ = false;
    std::size_t calls_ = 0;
};

}  // namespace afternoons
