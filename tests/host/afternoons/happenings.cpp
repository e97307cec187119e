// What an event of a story does.
#include <array>
#include <utility>

#include "tests/host/afternoons/world.h"

namespace afternoons {
namespace {

template <typename Value, std::size_t Size>
Value pick(const std::array<Value, Size>& values, int number) {
    return values[static_cast<std::size_t>(number) % Size];
}

constexpr std::array<Time, 7> patiences{Time{-1},     seconds(2),       seconds(5),   seconds(20),
                                        seconds(120), milliseconds(50), seconds(4000)};
constexpr std::array<Time, 4> expiries{Time{}, milliseconds(300), seconds(1), seconds(30)};
constexpr std::array<Time, 5> lengths{milliseconds(300), seconds(3), seconds(12), seconds(40),
                                      seconds(100)};
constexpr std::array<Time, 5> late{milliseconds(300), seconds(2), seconds(8), seconds(21),
                                   seconds(40)};

// Line breaks split the log line, and what stands behind one can look like any line.
const std::array<std::string, 14> file_names{
    "A\nDISCONNECTED|\nB.JPG",
    "A\nPRIME_DONE|OK\nB.JPG",
    "A\nREMOTE_CAPTURED|OK\nB.JPG",
    "A\nSAVE_DEST|card\nFILE_TYPE|other\nB.JPG",
    "A\nDOWNLOADED|%2Fshots%2F.incoming%2Frun-1%2FDSC00001.JPG\nB.JPG",
    "A\nCONNECTED|EVIL\nB.ARW",
    "\nERROR|Camera reported 0x00000001\n",
    "A\nLOG|[SONY] landed C\nDISCONNECTED|\nB.JPG",
    "A\nDISCONNECTED|\nDISCONNECTED|\nPRIME_DONE|OK\nPRIME_DONE|OK\nPRIME_DONE|OK\nB.JPG",
    "A\nLOG|[SONY] camera \"X\nSTATUS|Opening camera session\nB.JPG",
    "movie.MP4",
    ".hidden.JPG",
    "dsc00001.jpg",
    "A|B%7C.JPG"};

const std::array<std::string, 8> reports{"/etc/passwd",
                                         "../../secret.JPG",
                                         "/shots/.incoming/run-1/../run-2/DSC00001.JPG",
                                         "nothing.JPG",
                                         "",
                                         "/",
                                         "A\nDISCONNECTED|\nB.JPG",
                                         "\n\n\n"};

const std::array<std::string, 9> camera_names{
    "MODEL-A",
    "Evil\nCONNECTED|x\nSAVE_DEST|disk\nB",
    "Evil\nPRIME_DONE|OK\nB",
    "Evil\nSTATUS|Opening camera session\nERROR|Could not open the camera (0x00000001)\nB",
    "Evil\nDISCONNECTED|\nB",
    "A|B%0A",
    "",
    "Evil\nLOG|[SONY] landed x\nDISCONNECTED|\nB",
    "Evil\nSTATUS|Opening camera session\nCONNECTED|x\nPRIME_DONE|OK\nB"};

const std::array<std::string, 10> nonsense{"",
                                           "READY|OK",
                                           "CPP_WORKER|START sony-2.0",
                                           "PRIME_DONE|",
                                           "DOWNLOADED|",
                                           "DOWNLOADED|%0A%0D%7C",
                                           "CONNECTED|already",
                                           "SAVE_DEST|nowhere",
                                           "FILE_TYPE|",
                                           "\xff\xfe\x01"};

constexpr std::array<Nature, 10> natures{
    Nature::usual,           Nature::slow,        Nature::never_ready,  Nature::without_name,
    Nature::nonsense,        Nature::no_sdk,      Nature::dies_at_once, Nature::deaf,
    Nature::takes_no_folder, Nature::cannot_start};

}  // namespace

void World::happen(const Event& event) {
    if (!happens_to_host(event) && !wishes(event) && !happens_to_camera(event) &&
        !changes_settings(event) && !changes_camera(event) && !tells_of_camera(event) &&
        !happens_to_files(event) && !happens_to_worker(event)) {
        happens_to_disk(event);
    }
}

host::RequestId World::ask(const host::Request& what) {
    const host::RequestId id = ++last_request_;
    if (brain_) {
        inbox_.push_back(AskedFor{id, what});
    }
    return id;
}

void World::capture(int patience, int expires) {
    host::Capture capture;
    capture.tag = "tag-" + std::to_string(tags_.size());
    tags_.push_back(capture.tag);
    if (pick(patiences, patience) >= Time{}) {
        capture.patience = pick(patiences, patience);
    }
    if (expires >= 0) {
        capture.expires = pick(expiries, expires);
    }
    ask(capture);
}

void World::shut_down(int patience) {
    host::Shutdown end;
    if (patience > 0) {
        end.patience = pick(std::array<Time, 4>{Time{}, Time{}, seconds(2), seconds(60)}, patience);
    }
    connect_wanted_ = false;
    shut_ = shut_ || brain_ != nullptr;
    ask(end);
}

bool World::wishes(const Event& event) {
    host::Configure wish;
    switch (event.what) {
        case What::folder:
            wish.folder = pick(
                std::array<std::string, 8>{"/shots", "/a", "/b", "/a", "/none/of/it", "/forbidden",
                                           "/used", "/" + std::string(4090, 'x')},
                event.number);
            break;
        case What::destination:
            wish.save_destination =
                pick(std::array{host::SaveDestination::disk, host::SaveDestination::card,
                                host::SaveDestination::both},
                     event.number);
            break;
        case What::type:
            wish.file_type = pick(std::array{host::FileType::jpeg, host::FileType::raw,
                                             host::FileType::both, host::FileType::other},
                                  event.number);
            break;
        case What::name:
            wish.name = pick(std::array<std::string, 3>{"", "{date}/{n:4}", "{shot"}, event.number);
            break;
        default:
            return false;
    }
    ask(wish);
    return true;
}

bool World::happens_to_host(const Event& event) {
    switch (event.what) {
        case What::start:
            ask(host::Start{});
            break;
        case What::connect:
            connect_wanted_ = connect_wanted_ || !shut_;
            ask(host::Connect{});
            break;
        case What::disconnect:
            connect_wanted_ = false;
            ask(host::Disconnect{});
            break;
        case What::capture:
            capture(event.number, -1);
            break;
        case What::capture_soon:
            capture(0, event.number);
            break;
        case What::cancel: {
            const auto back = static_cast<std::size_t>(event.number) + 1;
            ask(host::Cancel{back <= tags_.size() ? tags_[tags_.size() - back] : "no such tag"});
            break;
        }
        case What::shutdown:
            shut_down(event.number);
            break;
        case What::deaf:
            hearing_ = false;
            witness_.deaf_ever = true;
            break;
        case What::hearing:
            hearing_ = true;
            break;
        default:
            return false;
    }
    return true;
}

void World::camera_back() {
    for (const auto& process : processes_) {
        if (std::exchange(camera_.vanished, false)) {
            process->worker->unplug(false);
        }
    }
    camera_.vanished = false;
    camera_.there = true;
    for (const auto& process : processes_) {
        process->worker->plug();
    }
}

// As the SDK tells of a loose contact: gone, waited for, and back.
void World::flap(int times) {
    if (processes_.empty() || !camera_.there) {
        return;
    }
    Worker* worker = processes_.back()->worker.get();
    worker->unplug(true);
    worker->plug();
    if (times > 1) {
        agenda_.after(milliseconds(350), [this, times] { flap(times - 1); });
    }
}

// Another camera hangs on the cable.
void World::swap() {
    camera_.there = false;
    if (!processes_.empty()) {
        processes_.back()->worker->unplug(false);
    }
    camera_.model = camera_.model == "MODEL-A" ? "MODEL-B" : "MODEL-A";
    camera_.counter = 1;
    ++camera_.counting;
    ++camera_.swapped;
    camera_.vanished = false;
    camera_.there = true;
}

// What a person does to it.
bool World::happens_to_camera(const Event& event) {
    Worker* worker = processes_.empty() ? nullptr : processes_.back()->worker.get();
    const bool in_session = worker != nullptr && worker->alive() && worker->has_session();
    switch (event.what) {
        case What::unplug:
        case What::unplug_reconnecting:
            camera_.there = false;
            if (worker != nullptr) {
                worker->unplug(event.what == What::unplug_reconnecting);
            }
            break;
        case What::plug:
            camera_back();
            break;
        case What::vanish:
            camera_.vanished = camera_.there;
            camera_.there = false;
            break;
        case What::card_out:
        case What::card_in:
        case What::card_full:
            camera_.card = event.what == What::card_out  ? Card::out
                           : event.what == What::card_in ? Card::in
                                                         : Card::full;
            if (in_session) {
                worker->card_changed();
            }
            break;
        case What::dial:
            camera_.dial = event.number + 1;
            camera_.turned = true;
            if (in_session) {
                worker->dial_turned();
            }
            break;
        case What::shutter:
            if (in_session && camera_.there) {
                worker->shutter({});
            }
            break;
        case What::counter:
            camera_.counter = pick(std::array{1, 9999, 4711}, event.number);
            ++camera_.counting;
            break;
        case What::swap:
            swap();
            break;
        case What::flap:
            flap(pick(std::array{1, 4, 20}, event.number));
            break;
        default:
            return false;
    }
    return true;
}

// Whether it takes and shows its settings from now on.
bool World::changes_settings(const Event& event) {
    switch (event.what) {
        case What::refuses_destination:
            camera_.refuses_destination = true;
            break;
        case What::refuses_type:
            camera_.refuses_type = true;
            break;
        case What::refuses_folder:
            camera_.refuses_folder = true;
            break;
        case What::takes_settings:
            camera_.refuses_destination = false;
            camera_.refuses_type = false;
            camera_.refuses_folder = false;
            break;
        case What::unreadable:
            (event.number == 0 ? camera_.card_unreadable : camera_.type_unreadable) = true;
            break;
        case What::readable:
            camera_.card_unreadable = false;
            camera_.type_unreadable = false;
            break;
        default:
            return false;
    }
    return true;
}

// What else it is like from now on.
bool World::changes_camera(const Event& event) {
    switch (event.what) {
        case What::no_focus:
        case What::focus:
            camera_.focuses = event.what == What::focus;
            break;
        case What::busy:
            camera_.busy_until = agenda_.now() + pick(lengths, event.number);
            break;
        case What::answers:
            camera_.answer = static_cast<Answer>(event.number);
            break;
        case What::opening:
            camera_.opening = pick(std::array<Time, 5>{Time{}, milliseconds(100), seconds(5),
                                                       seconds(19), seconds(21)},
                                   event.number);
            break;
        case What::exposure:
            camera_.exposure =
                pick(std::array<Time, 4>{Time{}, milliseconds(10), seconds(3), seconds(15)},
                     event.number);
            break;
        case What::transfer:
            camera_.transfer = pick(std::array<Time, 5>{Time{}, milliseconds(20), milliseconds(400),
                                                        seconds(2), seconds(9)},
                                    event.number);
            break;
        case What::named:
            camera_.model = pick(camera_names, event.number);
            break;
        case What::look_fails:
            camera_.looks_that_fail = pick(std::array{1, 4}, event.number);
            break;
        case What::opening_refused:
            camera_.openings_refused = pick(std::array{1, 4}, event.number);
            break;
        case What::buffer_full:
            camera_.buffer_full = true;
            break;
        default:
            return false;
    }
    return true;
}

// What the SDK tells of it, out of nowhere.
bool World::tells_of_camera(const Event& event) {
    Worker* worker = processes_.empty() ? nullptr : processes_.back()->worker.get();
    const bool in_session = worker != nullptr && worker->alive() && worker->has_session();
    switch (event.what) {
        case What::error:
            if (in_session) {
                worker->on_error("0x00008703");
            }
            break;
        case What::caution:
            if (in_session) {
                worker->on_warning(
                    "the camera is showing a caution on its own screen (0x0002008C)");
            }
            break;
        case What::warning:
            if (in_session) {
                worker->on_warning("warning 0x00020001");
            }
            break;
        case What::disconnected:
            if (in_session) {
                worker->on_disconnected("0x00000001");
            }
            break;
        case What::connected:
            if (in_session) {
                worker->on_connected();
            }
            break;
        case What::storm:
            for (int count = 0; in_session && count < 300; ++count) {
                event.number == 0 ? worker->dial_turned() : worker->card_changed();
            }
            break;
        default:
            return false;
    }
    return true;
}

FileFault& World::next_file() {
    if (camera_.faults.empty()) {
        camera_.faults.emplace_back();
    }
    return camera_.faults.back();
}

bool World::happens_to_files(const Event& event) {
    switch (event.what) {
        case What::file_late:
            next_file().late = pick(late, event.number);
            break;
        case What::file_truncated:
            next_file().truncated = true;
            break;
        case What::file_missing:
            next_file().missing = true;
            break;
        case What::file_twice:
            next_file().again =
                pick(std::array<Time, 3>{Time{}, milliseconds(700), seconds(6)}, event.number);
            break;
        case What::file_unreported:
            next_file().unreported = true;
            break;
        case What::file_absolute:
            next_file().absolute = true;
            break;
        case What::file_named:
            next_file().named = pick(file_names, event.number);
            break;
        case What::pair_reversed:
            camera_.pair_reversed = true;
            break;
        case What::pair_half:
            camera_.pair_half = true;
            break;
        case What::report:
            if (!processes_.empty() && processes_.back()->worker->has_session()) {
                processes_.back()->worker->report(pick(reports, event.number), nullptr);
            }
            break;
        case What::report_gap:
            camera_.report_gap = pick(
                std::array<Time, 4>{Time{}, milliseconds(2), milliseconds(19), milliseconds(200)},
                event.number);
            if (camera_.report_gap >= milliseconds(20)) {
                witness_.forging_may_slip_through = true;
            }
            break;
        default:
            return false;
    }
    return true;
}

// So many that they must not hold up what is behind them.
void World::write_many(Worker& worker, int kind) const {
    // One that lies about the dial is not to be found out.
    const std::string type = camera_.dial == 1   ? "jpeg"
                             : camera_.dial == 2 ? "raw"
                             : camera_.dial == 3 ? "both"
                                                 : "other";
    const std::array<std::string, 5> kinds{"LOG|[SONY] landed x",
                                           "DOWNLOADED|/shots/.incoming/run-1/x.JPG", "STATUS|busy",
                                           "FILE_TYPE|" + type, "LOG|[SONY] camera \"x"};
    const int many = kind == 1 ? 1500 : 300;
    for (int count = 0; count < many; ++count) {
        worker.write(pick(kinds, kind));
    }
    worker.ever_forged = worker.ever_forged || kind == 4;
    if (kind == 3) {
        worker.said.insert("type " + type);
    }
}

bool World::happens_to_worker(const Event& event) {
    Process* process = at_work();
    Worker* worker =
        process != nullptr && process->worker->alive() ? process->worker.get() : nullptr;
    if (event.what == What::next_worker) {
        next_nature_ = pick(natures, event.number);
        return true;
    }
    if (event.what < What::worker_hangs || event.what > What::nonsense) {
        return false;
    }
    if (worker == nullptr) {
        return true;
    }
    switch (event.what) {
        case What::worker_hangs:
            worker->hang(event.number == 4 ? Time::max() : pick(lengths, event.number));
            break;
        case What::worker_dies:
            worker->die(pick(std::array{0, 139, 1}, event.number));
            break;
        case What::worker_stops:
            worker->stand_still(pick(lengths, event.number));
            break;
        case What::worker_cannot_be_killed:
            worker->cannot_be_killed = true;
            worker->hang(Time::max());
            break;
        case What::input_full:
            inbox_.push_back(host::brain::News(host::brain::WorkerInputFull{process->run}));
            break;
        case What::flood:
            inbox_.push_back(
                host::brain::News(host::brain::WorkerFlooded{process->run, "50,000 lines in 1 s"}));
            break;
        case What::lines:
            write_many(*worker, event.number);
            break;
        case What::long_line:
            inbox_.push_back(host::brain::News(host::brain::LineTooLong{process->run}));
            break;
        case What::nonsense:
            worker->write(pick(nonsense, event.number));
            break;
        default:
            break;
    }
    return true;
}

void World::for_a_while(bool& what, int length) {
    what = true;
    agenda_.after(pick(lengths, length), [&what] { what = false; });
}

// Nobody calls the brain; everything else goes on.
void World::stand_still(Time duration) {
    if (brain_) {
        brain_still_until_ = std::max(brain_still_until_, agenda_.now() + duration);
        witness_.brain_stands_still(brain_still_until_);
    }
}

void World::happens_to_disk(const Event& event) {
    switch (event.what) {
        case What::disk_stuck:
            return for_a_while(disk_.stuck, event.number);
        case What::disk_slow:
            disk_.delay = pick(std::array<Time, 4>{milliseconds(1), milliseconds(15),
                                                   milliseconds(300), seconds(2)},
                               event.number);
            return;
        case What::disk_full:
            return for_a_while(disk_.full, event.number);
        case What::disk_read_only:
            return for_a_while(disk_.read_only, event.number);
        case What::disk_gone:
            return for_a_while(disk_.gone, event.number);
        case What::brain_killed:
            kill_brain();
            agenda_.after(
                pick(std::array<Time, 4>{Time{}, milliseconds(20), seconds(2), seconds(20)},
                     event.number),
                [this, of = disk_.generation] {
                    if (of == disk_.generation && !brain_) {
                        begin_brain();
                        if (connect_wanted_) {
                            ask(host::Connect{});
                        }
                    }
                });
            return;
        case What::brain_stops:
            return stand_still(pick(lengths, event.number));
        case What::sleep:
            witness_.brain_stands_still(agenda_.now() + seconds(1));  // when it looks next
            // All that runs on this machine stands still, and its clock does; the day goes on.
            day_ += pick(std::array<milliseconds, 3>{seconds(1), seconds(60), seconds(30000)},
                         event.number);
            return;
        default:
            return;
    }
}

}  // namespace afternoons
