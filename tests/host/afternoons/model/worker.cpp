#include "tests/host/afternoons/model/worker.h"

#include <utility>

#include "host/brain/text.h"
#include "host/process/fields.h"

namespace afternoons {

using host::brain::begins_with;

namespace {

constexpr Time watchdog{milliseconds(20100)};

std::string after_bar(const std::string& line) {
    const std::size_t bar = line.find('|');
    return bar == std::string::npos ? std::string() : line.substr(bar + 1);
}

}  // namespace

Worker::Worker(Agenda& agenda, Camera& camera, Surroundings& around, std::string folder,
               std::string destination, Nature nature)
    : agenda_(agenda),
      camera_(camera),
      around_(around),
      folder_(std::move(folder)),
      save_destination_(std::move(destination)),
      nature_(nature),
      self_(std::make_shared<int>()) {
    last_done_ = agenda.now();
}

Worker::~Worker() = default;

void Worker::later(Time delay, std::function<void()> what) {
    agenda_.after(delay, [this, self = std::weak_ptr<int>(self_), what = std::move(what)] {
        if (self.expired() || !alive_) {
            return;
        }
        if (agenda_.now() < still_until_) {
            return later(still_until_ - agenda_.now(), what);
        }
        what();
    });
}

void Worker::step(Time delay, std::function<void()> what) {
    later(delay, [this, what = std::move(what)] {
        if (agenda_.now() < hung_until_) {
            if (hung_until_ == Time::max()) {
                return;  // for good
            }
            return step(hung_until_ - agenda_.now(), what);
        }
        what();
    });
}

void Worker::write(const std::string& text) {
    std::size_t at = 0;
    for (std::size_t end; (end = text.find('\n', at)) != std::string::npos; at = end + 1) {
        ever_forged = true;
        around_.line(text.substr(at, end - at));
    }
    around_.line(text.substr(at));
}

void Worker::log(const std::string& text) {
    write("LOG|[SONY] " + text);
}

void Worker::start() {
    const Time quick = milliseconds(5);
    if (nature_ == Nature::dies_at_once) {
        return later(quick, [this] { die(127); });
    }
    if (nature_ == Nature::nonsense) {
        return later(quick, [this] {
            write("Usage: another program [OPTIONS]");
            write("READY|OK");
            write("PRIME_DONE|OK");
        });
    }
    later(quick, [this] {
        if (nature_ != Nature::without_name) {
            write("CPP_WORKER|START sony-1.0");
        }
        if (nature_ == Nature::never_ready) {
            return;
        }
        later(nature_ == Nature::slow ? milliseconds(7000) : milliseconds(30), [this] {
            if (nature_ == Nature::no_sdk) {
                write("ERROR|Sony Camera Remote SDK failed to initialise");
                return die(1);
            }
            log("Camera Remote SDK 1.0.0");
            write("READY|OK");
            ready_ = true;
            if (nature_ == Nature::deaf) {
                hung_since_ = agenda_.now();
            }
            last_done_ = agenda_.now();
            go_on();
        });
    });
}

void Worker::hear(const std::string& line, std::optional<Number> capture) {
    constexpr std::size_t longest = 4095;
    for (std::size_t at = 0; !closed_ && at <= line.size(); at += longest) {
        post(line.substr(at, longest), capture);
    }
}

void Worker::post(std::string line, std::optional<Number> capture) {
    if (!alive_ || nature_ == Nature::nonsense || nature_ == Nature::deaf) {
        return;
    }
    if (commands_.empty() && !busy_) {
        last_done_ = agenda_.now();
    }
    commands_.push_back({std::move(line), capture});
    go_on();
}

void Worker::close_input() {
    closed_ = true;
    if (nature_ == Nature::nonsense) {
        return later(milliseconds(1), [this] { die(0); });
    }
    go_on();
}

void Worker::terminate() {
    if (nature_ == Nature::nonsense) {
        return die(128 + 15);
    }
    if (!std::exchange(terminated_, true)) {
        post("QUIT");
    }
}

void Worker::kill() {
    if (!cannot_be_killed) {
        die(128 + 9);
    }
}

void Worker::die(int status) {
    if (!std::exchange(alive_, false)) {
        return;
    }
    connected_ = false;
    session_ = false;
    around_.ended(status);
}

void Worker::go_on() {
    if (busy_ || !ready_ || !alive_ || leaving_) {
        return;
    }
    if (agenda_.now() < hung_until_ || agenda_.now() < still_until_) {
        busy_ = true;
        return step(Time{}, [this] {
            busy_ = false;
            go_on();
        });
    }
    if (commands_.empty()) {
        if (closed_) {
            leave(0);
        }
        return;
    }
    const Command command = std::move(commands_.front());
    commands_.pop_front();
    busy_ = true;
    run(command);
}

void Worker::done() {
    busy_ = false;
    last_done_ = agenda_.now();
    go_on();
}

Time Worker::stuck_since() const {
    if (!alive_ || (nature_ != Nature::deaf && (commands_.empty() || !ready_))) {
        return Time::max();
    }
    return agenda_.now() < still_until_ ? std::min(still_since_, hung_since_) : hung_since_;
}

void Worker::leave(int status) {
    leaving_ = true;
    if (handle_ && connected_) {
        session_ = false;
    }
    step(milliseconds(20), [this, status] { die(status); });
    // The exit's own deadline.
    if (hung_until_ != Time::max()) {
        later(seconds(3), [this, status] { die(status); });
    }
}

void Worker::run(const Command& command) {
    const std::string& line = command.line;
    if (line == "QUIT") {
        return leave(0);
    }
    if (line == "CONNECT") {
        return connect();
    }
    if (begins_with(line, "CONNECT|")) {
        if (!after_bar(line).empty()) {
            save_destination_ = after_bar(line);
        }
        return connect();
    }
    if (line == "DISCONNECT") {
        disconnect(false);
    } else if (line == "PRIME") {
        write("PRIME_DONE|OK");
    } else if (line == "PRELOAD") {
        write("PRELOADED|OK");
    } else if (line == "CAPTURE") {
        return capture(command.capture);
    } else if (begins_with(line, "SET_DOWNLOAD_DIR|")) {
        set_folder(host::unescape_field(after_bar(line)));
    } else if (begins_with(line, "SET_SAVE_DEST|")) {
        return set_destination(after_bar(line));
    } else if (begins_with(line, "SET_FILE_TYPE|")) {
        return set_type(after_bar(line));
    } else if (line == "__APPLY_SETTINGS") {
        return apply_settings();
    } else if (line == "__CARD_CHECK") {
        return check_card();
    } else if (line == "__FILETYPE_CHECK") {
        if (connected_) {
            return apply_pair_transfer(false, [this] { done(); });
        }
    } else if (begins_with(line, "__CONNECT_TIMEOUT|")) {
        time_out(static_cast<unsigned int>(std::stoul(after_bar(line))));
    } else {
        write("ERROR|Unknown command: " + line);
    }
    done();
}

void Worker::connect() {
    if (handle_) {
        write("CONNECTED|already");
        return done();
    }
    write("STATUS|Looking for a camera");
    step(camera_.looking, [this] { look(); });
}

void Worker::look() {
    if (!camera_.there) {
        write("ERROR|Camera not detected");
        return done();
    }
    log("camera \"" + camera_.model + "\" over USB");
    camera_name_ = camera_.model;
    write("STATUS|Opening camera session");
    open();
    done();
}

void Worker::open() {
    const unsigned int attempt = ++attempt_;
    armed_ = attempt;
    handle_ = true;
    later(watchdog, [this, attempt] {
        if (armed_ != attempt) {
            return;
        }
        armed_ = 0;
        log("no answer to Connect in 20 s — giving the handle back");
        write("ERROR|Could not open the camera (timeout) — replug the camera");
        post("__CONNECT_TIMEOUT|" + std::to_string(attempt));
    });
    const Answer answer = camera_.answer;
    if (answer == Answer::never) {
        return;
    }
    const Time delay = camera_.opening + (answer == Answer::late ? seconds(12) : Time{});
    later(delay, [this, attempt, answer] {
        if (attempt != attempt_ || !handle_ || session_ || waiting_) {
            return;
        }
        if (answer == Answer::error) {
            return on_error("0x00008400");
        }
        if (!camera_.there || answer == Answer::disconnected) {
            return on_disconnected("0x00005111");
        }
        session_ = true;
        ++session_number_;
        camera_.destination = 2;
        on_connected();
    });
}

void Worker::on_connected() {
    armed_ = 0;
    connected_ = true;
    closing_ = false;
    log("session up (connection version 3)");
    // Posted first, but the main thread may be slower than this one.
    const std::string line = "CONNECTED|" + host::escape_field(camera_name_);
    if (attempt_ % 2 == 0) {
        post("__APPLY_SETTINGS");
        return write(line);
    }
    write(line);
    post("__APPLY_SETTINGS");
}

void Worker::on_disconnected(const std::string& reason) {
    armed_ = 0;
    connected_ = false;
    last_without_session = agenda_.now();
    if (closing_) {
        return;
    }
    log("camera went away (" + reason + ")");
    write("DISCONNECTED|");
}

void Worker::on_warning(const std::string& text) {
    log(text);
}

void Worker::on_error(const std::string& code) {
    armed_ = 0;
    log("error " + code);
    write("ERROR|Camera reported " + code);
}

void Worker::disconnect(bool quiet) {
    armed_ = 0;
    if (handle_) {
        closing_ = true;
        session_ = false;
        waiting_ = false;
        handle_ = false;
        ++session_number_;
        connected_ = false;
        last_without_session = agenda_.now();
    }
    if (!quiet) {
        write("DISCONNECTED|");
    }
}

void Worker::time_out(unsigned int attempt) {
    if (attempt != attempt_ || connected_ || !handle_) {
        return;
    }
    closing_ = true;
    session_ = false;
    waiting_ = false;
    handle_ = false;
}

void Worker::hang(Time duration) {
    if (!alive_ || nature_ == Nature::nonsense) {
        return;
    }
    if (agenda_.now() >= hung_until_) {
        hung_since_ = agenda_.now();
    }
    hung_until_ =
        duration == Time::max() ? duration : std::max(hung_until_, agenda_.now() + duration);
    if (duration != Time::max()) {
        later(duration, [this] {
            if (agenda_.now() >= hung_until_) {
                hung_since_ = Time::max();
            }
        });
    }
}

// The whole process: its signals wait too, but SIGKILL does not.
void Worker::stand_still(Time duration) {
    still_until_ = std::max(still_until_, agenda_.now() + duration);
    still_since_ = agenda_.now();
}

}  // namespace afternoons
