#include "tests/host/afternoons/model/worker.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <utility>

#include "host/process/fields.h"

namespace afternoons {

namespace {

// Of a command that does nothing but answer; null: of any other.
const char* reply_to(std::string_view name) {
    static constexpr std::array<std::pair<std::string_view, const char*>, 6> replies{{
        {"PRIME", "PRIME_DONE|OK"},
        {"PRELOAD", "PRELOADED|OK"},
        {"PUMP_ACTIVE", "PUMP_ACTIVE_READY|OK"},
        {"PUMP_IDLE", "PUMP_IDLE_READY|OK"},
        {"PUMP_PAUSE", "PUMP_IDLE_READY|OK"},
        {"PUMP_STOP", "PUMP_IDLE_READY|OK"},
    }};
    for (const auto& [command, reply] : replies) {
        if (command == name) {
            return reply;
        }
    }
    return nullptr;
}

constexpr Time watchdog{milliseconds(20100)};

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
        around_.line(text.substr(at, end - at), at > 0);
    }
    around_.line(text.substr(at), at > 0);
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
    while (!line.empty() && line.back() == '\r') {
        line.pop_back();
    }
    if (line.empty() || !alive_ || nature_ == Nature::nonsense || nature_ == Nature::deaf) {
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

// As the worker's own table has them: names in any case, some with synonyms, and one with too few
// fields is passed over without a word.
void Worker::run(const Command& command) {
    const std::string& line = command.line;
    const std::size_t bar = line.find('|');
    std::string name = line.substr(0, bar);
    for (char& byte : name) {
        byte = byte >= 'a' && byte <= 'z' ? static_cast<char>(byte - 'a' + 'A') : byte;
    }
    const bool has_field = bar != std::string::npos;
    const std::string field =
        has_field ? line.substr(bar + 1, line.find('|', bar + 1) - bar - 1) : "";
    const auto is = [&name](std::initializer_list<std::string_view> names) {
        return std::find(names.begin(), names.end(), name) != names.end();
    };
    if (name == "QUIT") {
        return leave(0);
    }
    if (name == "CONNECT") {
        if (!field.empty()) {
            save_destination_ = field;
        }
        return connect();
    }
    if (is({"CAPTURE", "REMOTE_CAPTURE", "CAPTURE_NONAF", "REMOTE_CAPTURE_NONAF"})) {
        return capture(command.capture);
    }
    if (name == "__APPLY_SETTINGS") {
        return apply_settings();
    }
    if (name == "__CARD_CHECK") {
        return check_card();
    }
    if (name == "__FILETYPE_CHECK") {
        return connected_ ? apply_pair_transfer(false, [this] { done(); }) : done();
    }
    if (is({"SET_SAVE_DEST", "SET_SAVE_DESTINATION", "SAVE_DEST"})) {
        return has_field ? set_destination(field) : done();
    }
    if (name == "SET_FILE_TYPE") {
        return has_field ? set_type(field) : done();
    }
    if (const char* reply = reply_to(name)) {
        write(reply);
    } else if (name == "DISCONNECT") {
        disconnect(false);
    } else if (name == "SET_DOWNLOAD_DIR") {
        if (has_field) {
            set_folder(host::unescape_field(field));
        }
    } else if (name == "__CONNECT_TIMEOUT") {
        if (has_field) {
            time_out(static_cast<unsigned int>(std::strtoul(field.c_str(), nullptr, 10)));
        }
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
    if (camera_.looks_that_fail > 0) {
        --camera_.looks_that_fail;
        const std::string code = "0x00008703";
        if (std::exchange(last_look_, code) != code) {
            log("enumeration failed (" + code +
                ") — the SDK could not create its USB adapter; check "
                "Contents/Frameworks/CrAdapter");
        }
        write("ERROR|Camera not detected");
        return done();
    }
    if (!camera_.there) {
        last_look_.clear();
        write("ERROR|Camera not detected");
        return done();
    }
    log("camera \"" + camera_.model + "\" over USB");
    camera_name_ = camera_.model;
    write("STATUS|Opening camera session");
    if (camera_.openings_refused > 0) {
        --camera_.openings_refused;
        ++attempt_;
        write("ERROR|Could not open the camera (0x00005108)");
    } else {
        open();
    }
    done();
}

void Worker::open() {
    const unsigned int attempt = ++attempt_;
    armed_ = attempt;
    handle_ = true;
    opening_ = true;
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
        if (attempt != attempt_ || !std::exchange(opening_, false)) {
            return;
        }
        const std::string& code = camera_.answer_code;
        if (answer == Answer::error) {
            return on_error(code.empty() ? "0x00008400" : code);
        }
        if (!camera_.there || answer == Answer::disconnected) {
            return on_disconnected(camera_.there && !code.empty() ? code : "0x00005111");
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

// Told once, whatever the SDK repeats, and while the session is closed as well.
void Worker::on_reconnecting() {
    if (std::exchange(connected_, false)) {
        last_without_session = agenda_.now();
        log("camera went away (the SDK is trying to reconnect)");
        write("DISCONNECTED|");
    }
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
        opening_ = false;
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
    opening_ = false;
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
