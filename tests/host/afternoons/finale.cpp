// The end of every afternoon: whatever was wrong is right again, and then everything must be.
#include "tests/host/afternoons/world.h"

namespace afternoons {

void World::heal() {
    camera_.card = Card::in;
    camera_.focuses = true;
    camera_.busy_until = {};
    camera_.refuses_destination = false;
    camera_.refuses_type = false;
    camera_.refuses_folder = false;
    camera_.card_unreadable = false;
    camera_.type_unreadable = false;
    camera_.answer = Answer::normal;
    camera_.looks_that_fail = 0;
    camera_.openings_refused = 0;
    camera_.buffer_full = false;
    camera_.opening = milliseconds(1200);
    camera_.exposure = milliseconds(10);
    camera_.transfer = milliseconds(150);
    camera_.report_gap = {};
    camera_.faults.clear();
    camera_.pair_half = false;
    camera_back();
    if (Process* process = at_work(); process != nullptr && process->worker->has_session()) {
        process->worker->card_changed();
        if (camera_.turned) {
            process->worker->dial_turned();  // perhaps while nobody could read it
        }
    }
    next_nature_ = Nature::usual;
    disk_.stuck = false;
    disk_.full = false;
    disk_.read_only = false;
    disk_.gone = false;
    disk_.delay = milliseconds(1);
    hearing_ = true;
    for (const std::string& tag : tags_) {
        ask(host::Cancel{tag});  // some wait for an hour
    }
}

void World::finale() {
    note("** all is well again");
    all_well_ = true;
    heal();
    run_for(seconds(100));
    heal();  // what was to last longer than that
    run_for(seconds(100));
    // Who was called late has the late files of a shot without files still to reckon with, and a
    // counter that was set back looks like one.
    run_until(std::max(agenda_.now(), brain_still_until_ + seconds(125)));
    if (!brain_ || shut_) {
        if (brain_) {
            witness_.must_be_shut();
            kill_brain();
        }
        begin_brain();
        connect_wanted_ = false;
    }
    if (!connect_wanted_) {
        note("** a session is asked for");
        ask(host::Connect{});
        run_for(seconds(61));
    }
    witness_.must_be_ready(brain_->state());
    note("** a picture is asked for");
    // What was not taken when it was asked for is taken now.
    host::Configure wish;
    wish.save_destination = host::SaveDestination::disk;
    wish.file_type = host::FileType::both;
    for (const host::Problem& problem : brain_->state().problems) {
        if (problem.code == host::Code::folder_not_taken) {
            wish.folder = brain_->state().folder;
        }
    }
    ask(wish);
    host::Capture capture;
    capture.tag = "last";
    const host::RequestId last = ask(capture);
    run_for(seconds(30));
    witness_.must_be_complete(last);
    note("** the end is asked for");
    const host::RequestId end = ask(host::Shutdown{});
    run_for(seconds(31));
    witness_.must_be_ended(end);
    witness_.look_back();
}

}  // namespace afternoons
