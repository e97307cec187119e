// The worker's process: its main thread, its queue, its SDK's threads and what they write, as a
// host sees them. Held against the real worker by worker_model_test.cpp.
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "tests/host/afternoons/agenda.h"
#include "tests/host/afternoons/model/camera.h"

namespace afternoons {

// What is around a worker.
class Surroundings {
  public:
    virtual ~Surroundings() = default;
    // `forged`: the rest of somebody's name, behind a line break.
    virtual void line(const std::string& line, bool forged) = 0;
    virtual void ended(int status) = 0;
    // The shutter has opened. Nothing: no picture.
    virtual Press* pressed(std::optional<Number> capture) = 0;
    // A file is in the folder, or not, because that cannot take it; then nothing.
    virtual File* landed(const Press& press, const std::string& name, host::Kind kind, bool whole,
                         const std::string& folder) = 0;
    virtual bool taken(const std::string& folder, const std::string& stem) = 0;
};

// What the next worker is like.
enum class Nature {
    usual,
    slow,          // to get ready
    never_ready,   // says who it is, and no more
    without_name,  // READY, and nothing before it
    nonsense,      // is another program
    no_sdk,        // the SDK cannot be started
    dies_at_once,  // before it has said anything
    deaf,          // gets ready and answers nothing
    takes_no_folder,
    cannot_start
};

class Worker {
  public:
    Worker(Agenda& agenda, Camera& camera, Surroundings& around, std::string folder,
           std::string destination, Nature nature);
    ~Worker();
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    void start();
    // A line from the host, and whose capture it is if it is one.
    void hear(const std::string& line, std::optional<Number> capture = {});
    void close_input();
    void terminate();
    void kill();
    void die(int status);

    // What happens to the camera in session, if it is this worker's.
    void unplug(bool reconnecting);
    void plug();
    void card_changed();
    void dial_turned();
    void shutter(std::optional<Number> capture);
    void on_connected();
    void on_disconnected(const std::string& reason);
    void on_warning(const std::string& text);
    void on_reconnecting();
    void on_error(const std::string& code);
    void report(const std::string& name, File* file);

    void hang(Time duration);
    void stand_still(Time duration);
    void write(const std::string& text);

    bool alive() const {
        return alive_;
    }
    // Where the camera's files go to, as far as this worker decides it.
    const std::string& writes_to() const {
        return save_info_.empty() ? folder_ : save_info_;
    }
    bool ready() const {
        return ready_;
    }
    bool connected() const {
        return connected_;
    }
    bool has_session() const {
        return session_;
    }
    // Since when the main thread has done nothing although it should; Time::max(): it does.
    Time stuck_since() const;

    bool cannot_be_killed = false;
    std::set<std::string> said;  // every SAVE_DEST and FILE_TYPE that was meant
    Time last_without_session{};
    bool ever_forged = false;  // a line break was in what it was given to write

  private:
    struct Command {
        std::string line;
        std::optional<Number> capture;
    };

    void post(std::string line, std::optional<Number> capture = {});
    void go_on();
    void done();
    void run(const Command& command);
    void leave(int status);
    // On the main thread, later.
    void step(Time delay, std::function<void()> what);
    // On a thread of the SDK's.
    void later(Time delay, std::function<void()> what);
    void log(const std::string& text);

    void connect();
    void look();
    void open();
    void disconnect(bool quiet);
    void time_out(unsigned int attempt);
    void capture(std::optional<Number> of);
    void set_folder(const std::string& folder);
    void set_destination(const std::string& word);
    void set_type(const std::string& word);
    void apply_settings();
    void apply_folder();
    void apply_destination(std::function<void()> then);
    void apply_pair_transfer(bool force, std::function<void()> then);
    void check_card();
    using Result = std::string;  // empty: taken
    void set_property(int property, std::function<Result()> take,
                      std::function<void(const Result&)> then, int tries = 5);
    std::optional<Result> refusal_of(int property);
    bool reachable() const;
    bool card_in() const;
    void send(Press& press, Time from);
    void land(const Press& press, host::Kind kind, const FileFault& fault);

    Agenda& agenda_;
    Camera& camera_;
    Surroundings& around_;
    std::string folder_;
    std::string save_destination_;
    Nature nature_;
    bool started_ = false;
    bool alive_ = true;
    bool connected_ = false;
    bool closing_ = false;
    bool session_ = false;  // of the SDK with the camera; outlives `connected_` at times
    bool opening_ = false;  // Connect is not answered yet
    bool waiting_ = false;  // the SDK waits for the camera to come back
    bool handle_ = false;
    unsigned int attempt_ = 0;
    unsigned int armed_ = 0;
    std::string camera_name_;
    std::string last_look_;  // how the latest one failed that did
    std::string save_info_;  // what the SDK was given
    int reported_type_ = 0;
    int card_present_ = 2;  // not known
    bool card_fallback_ = false;
    std::deque<Command> commands_;
    bool busy_ = false;
    bool closed_ = false;  // the input
    bool ready_ = false;
    bool leaving_ = false;
    bool terminated_ = false;
    Time hung_since_ = Time::max();
    Time hung_until_{};
    Time still_until_{};
    Time still_since_{};
    Time last_done_{};
    Time sent_until_{};
    Number session_number_ = 0;
    std::shared_ptr<int> self_;  // gone: nothing of this worker happens any more
};

}  // namespace afternoons
