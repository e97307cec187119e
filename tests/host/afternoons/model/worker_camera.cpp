// What the worker does with a camera in session, and what the camera does by itself.
#include <utility>

#include "host/process/fields.h"
#include "tests/host/afternoons/model/worker.h"

namespace afternoons {
namespace {

constexpr Time focusing{milliseconds(700)};
constexpr Time pressing{milliseconds(35)};
constexpr Time between_writes{milliseconds(400)};
constexpr Time switching{milliseconds(600)};

const char* type_word(int value) {
    return value == 1 ? "jpeg" : value == 2 ? "raw" : value == 3 ? "both" : "other";
}

}  // namespace

bool Worker::reachable() const {
    return session_ && camera_.there;
}

bool Worker::card_in() const {
    return camera_.card != Card::out;
}

std::optional<Worker::Result> Worker::refusal_of(int property) {
    for (auto refusal = camera_.refusals.begin(); refusal != camera_.refusals.end(); ++refusal) {
        if (refusal->property != property) {
            continue;
        }
        const bool is_the_last = refusal->times == 1;
        if (refusal->times > 0) {
            --refusal->times;
        }
        std::optional<Result> result = refusal->result;
        if (is_the_last) {
            camera_.refusals.erase(refusal);
        }
        return result;
    }
    return std::nullopt;
}

// A camera that is busy is asked again; one that is gone is not.
void Worker::set_property(int property, std::function<Result()> take,
                          std::function<void(const Result&)> then, int tries) {
    const std::string busy = "0x00008402";
    std::optional<Result> result = refusal_of(property);
    if (!result) {
        result = !reachable() ? "0x00005102" : agenda_.now() < camera_.busy_until ? busy : take();
    }
    if (result != busy || tries == 0 || !connected_) {
        return then(*result);
    }
    step(between_writes, [this, property, take = std::move(take), then = std::move(then), tries] {
        set_property(property, take, then, tries - 1);
    });
}

void Worker::set_folder(const std::string& folder) {
    if (nature_ == Nature::takes_no_folder) {
        return;
    }
    folder_ = folder;
    write("DOWNLOAD_DIR|" + host::escape_field(folder));
    if (connected_) {
        apply_folder();
    }
}

void Worker::apply_folder() {
    if (folder_.empty()) {
        log("no download folder yet — shots stay on the camera");
    } else if (camera_.refuses_folder || !reachable()) {
        write("ERROR|Could not set the download folder (0x00008001)");
    } else {
        save_info_ = folder_;
    }
}

void Worker::set_destination(const std::string& word) {
    save_destination_ = word;
    if (!connected_) {
        return done();
    }
    apply_destination([this] { done(); });
}

void Worker::apply_destination(std::function<void()> then) {
    const auto priority = [this](const Result& result) {
        if (!result.empty()) {
            log("could not take PC Remote priority (" + result + ")");
        }
    };
    const auto destination = [this, then = std::move(then)] {
        const bool card = camera_.card_unreadable || !reachable() ? card_present_ != 0 : card_in();
        card_present_ = card ? 1 : 0;
        card_fallback_ = !card && save_destination_ != "disk";
        const int value = card_fallback_ || save_destination_ == "disk" ? 1
                          : save_destination_ == "card"                 ? 2
                                                                        : 3;
        const auto take = [this, value]() -> Result {
            if (camera_.refuses_destination) {
                return "0x00008000";
            }
            camera_.destination = value;
            return {};
        };
        const auto told = [this, then](const Result& result) {
            if (!result.empty()) {
                log("could not set the save destination (" + result +
                    ") — the camera keeps its own setting");
            } else if (card_fallback_) {
                log("no memory card in the camera — saving to the computer only (the setting is "
                    "\"" +
                    save_destination_ + "\"; it returns when a card goes in)");
                write("STATUS|No memory card in the camera — saving to the computer only");
                said.insert("disk");
                write("SAVE_DEST|disk");
            } else {
                log("save destination: " + save_destination_);
                said.insert(save_destination_);
                write("SAVE_DEST|" + save_destination_);
            }
            then();
        };
        set_property(0x0119, take, told);
    };
    set_property(
        0x011A, []() -> Result { return {}; },
        [priority, destination](const Result& result) {
            priority(result);
            destination();
        });
}

void Worker::check_card() {
    if (!connected_) {
        return done();
    }
    const bool card = camera_.card_unreadable || !reachable() ? card_present_ != 0 : card_in();
    if (card_present_ == (card ? 1 : 0)) {
        return done();
    }
    log(card ? "a memory card went in" : "the memory card came out");
    apply_destination([this] { done(); });
}

void Worker::set_type(const std::string& word) {
    if (!connected_) {
        write("ERROR|Camera not connected");
        return done();
    }
    const int value = word == "jpeg" ? 1 : word == "raw" ? 2 : word == "both" ? 3 : 0;
    if (value == 0) {
        write("ERROR|Unknown file type: " + word);
        return done();
    }
    const auto take = [this, value]() -> Result {
        if (camera_.refuses_type) {
            return "0x00008402";
        }
        if (camera_.dial != value) {
            camera_.dial = value;
            dial_turned();
        }
        return {};
    };
    set_property(0x0106, take, [this, word](const Result& result) {
        const auto told = [this] {
            apply_pair_transfer(true, [this] { done(); });
        };
        if (result.empty()) {
            log("file type asked of the camera: " + word);
            return step(switching, told);
        }
        log("the camera would not change its file type (" + result + ")");
        write("ERROR|The camera would not change its file type — set it on the camera");
        told();
    });
}

void Worker::apply_pair_transfer(bool force, std::function<void()> then) {
    const bool readable = reachable() && !camera_.type_unreadable;
    if (!readable || (!force && camera_.dial == reported_type_)) {
        return then();
    }
    reported_type_ = camera_.dial;
    said.insert(std::string("type ") + type_word(camera_.dial));
    write(std::string("FILE_TYPE|") + type_word(camera_.dial));
    if (camera_.dial != 3 && camera_.dial != 4) {
        return then();
    }
    const bool jpeg = camera_.dial == 3;
    const auto take = [this, jpeg]() -> Result {
        camera_.pair_transfer = jpeg ? 0 : 3;
        return {};
    };
    set_property(0x0507, take, [this, jpeg, then = std::move(then)](const Result& result) {
        if (!result.empty()) {
            log("could not ask for both halves of a RAW pair (" + result +
                ") — the camera sends its own choice");
        } else {
            log(jpeg ? "RAW+JPEG at the camera — both files come to the computer"
                     : "RAW+HEIF at the camera — both files come to the computer");
        }
        then();
    });
}

void Worker::apply_settings() {
    if (!connected_) {
        return done();
    }
    apply_folder();
    apply_destination([this] { apply_pair_transfer(true, [this] { done(); }); });
}

void Worker::capture(std::optional<Number> of) {
    if (!connected_) {
        write("ERROR|Camera not connected");
        return done();
    }
    step(focusing, [this, of] {
        if (reachable() && camera_.focuses) {
            shutter(of);
        }
        step(pressing, [this] {
            write("REMOTE_CAPTURED|OK");
            done();
        });
    });
}

// The SDK numbers shots by what lies in its folder, and takes no number twice.
void Worker::shutter(std::optional<Number> of) {
    const bool to_computer = session_ && camera_.destination != 2 && !save_info_.empty();
    const bool to_card = camera_.destination != 1;
    if (std::exchange(camera_.buffer_full, false)) {
        return later(Time{}, [this] { on_warning("warning 0x00025102"); });
    }
    if (to_card && camera_.card != Card::in) {
        const bool full = camera_.card == Card::full;
        return later(Time{}, [this, full] {
            on_warning(full ? "warning 0x00025101" : "warning 0x00025103");
        });
    }
    Press* press = around_.pressed(of);
    press->at = agenda_.now();
    press->dial = camera_.dial;
    press->counting = camera_.counting;
    press->camera = camera_.swapped;
    for (int tries = 0; tries < 9999; ++tries) {
        std::string number = std::to_string(camera_.counter);
        number.insert(0, 5 - number.size(), '0');
        camera_.counter = camera_.counter % 9999 + 1;
        press->stem = "DSC" + number;
        if (!around_.taken(save_info_, press->stem)) {
            break;
        }
    }
    press->halves = 0;
    if (to_computer) {
        send(*press, agenda_.now() + camera_.exposure);
    }
}

void Worker::send(Press& press, Time from) {
    using host::Kind;
    std::vector<Kind> kinds;
    const bool both = camera_.pair_transfer == 0 || camera_.pair_transfer == 3;
    if (camera_.dial == 1 || camera_.dial == 5 ||
        (camera_.dial >= 3 && !both && camera_.pair_transfer != 2)) {
        kinds = {Kind::developed};
    } else if (camera_.dial == 2 || !both) {
        kinds = {Kind::raw};
    } else if (std::exchange(camera_.pair_reversed, false)) {
        kinds = {Kind::developed, Kind::raw};
    } else {
        kinds = {Kind::raw, Kind::developed};
    }
    press.halves = static_cast<int>(kinds.size());
    if (kinds.size() == 2 && std::exchange(camera_.pair_half, false)) {
        kinds.pop_back();
        press.all_sent = false;
    }
    sent_until_ = std::max(sent_until_, from);
    for (const Kind kind : kinds) {
        FileFault fault;
        if (!camera_.faults.empty()) {
            fault = camera_.faults.front();
            camera_.faults.pop_front();
        }
        sent_until_ += camera_.transfer;
        const Number session = session_number_;
        const Time when = sent_until_ - agenda_.now() + fault.late.value_or(Time{});
        later(when, [this, press, kind, fault, session] {
            // A session that ends takes the files with it that were not sent.
            if (session == session_number_ && reachable()) {
                land(press, kind, fault);
            }
        });
    }
}

void Worker::land(const Press& press, host::Kind kind, const FileFault& fault) {
    std::string name = press.stem + (kind == host::Kind::raw ? ".ARW"
                                     : camera_.dial == 4     ? ".HIF"
                                                             : ".JPG");
    if (fault.named) {
        name = *fault.named;
    }
    if (fault.missing) {
        return report(name, nullptr);
    }
    File* file = around_.landed(press, name, kind, !fault.truncated, save_info_);
    if (file == nullptr) {
        return on_warning("warning 0x00025104");
    }
    if (fault.unreported) {
        return;
    }
    const std::string as = fault.absolute ? save_info_ + "/" + name : name;
    report(as, file);
    if (fault.again) {
        later(*fault.again, [this, as, file] { report(as, file); });
    }
}

// Two lines, and another thread may be let in between them.
void Worker::report(const std::string& name, File*) {
    if (name.empty()) {
        return;
    }
    log("landed " + name);
    const std::string path = name.front() == '/' ? name : folder_ + "/" + name;
    const std::string line = "DOWNLOADED|" + host::escape_field(path);
    if (camera_.report_gap == Time{}) {
        return write(line);
    }
    later(camera_.report_gap, [this, line] { write(line); });
}

void Worker::unplug(bool reconnecting) {
    if (!handle_ || (!session_ && !waiting_ && !opening_)) {
        return;
    }
    opening_ = false;
    ++session_number_;
    session_ = false;
    waiting_ = reconnecting;
    later(Time{}, [this, reconnecting] {
        if (!reconnecting) {
            return on_disconnected("0x00005111");
        }
        on_reconnecting();
    });
}

void Worker::plug() {
    if (!waiting_ || !handle_) {
        return;
    }
    later(milliseconds(300), [this] {
        if (waiting_ && handle_ && camera_.there) {
            waiting_ = false;
            session_ = true;
            ++session_number_;
            camera_.destination = 2;
            on_connected();
        }
    });
}

void Worker::card_changed() {
    if (reachable()) {
        later(Time{}, [this] { post("__CARD_CHECK"); });
    }
}

void Worker::dial_turned() {
    if (reachable()) {
        later(Time{}, [this] { post("__FILETYPE_CHECK"); });
    }
}

}  // namespace afternoons
