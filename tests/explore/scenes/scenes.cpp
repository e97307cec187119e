#include "tests/explore/faults/tours.h"
#include "tests/explore/scenes/all.h"

namespace explore {

const std::vector<const Scene*>& scenes() {
    static const auto& all = *new std::vector<const Scene*>{
        &start_and_quit,
        &end_of_input,
        &input_closed_at_once,
        &sdk_does_not_start,
        &sdk_does_not_start_unread,
        &lines_behind_quit,
        &signal_at_any_moment,
        &hangup_ignored_by_host,
        &interrupt_ignored_by_host,
        &termination_ignored_by_host,
        &signals_pile_up,
        &waking_for_nothing,
        &connect_answered,
        &connect_returns_late,
        &connect_refused,
        &no_camera_found,
        &disconnect_crosses_answer,
        &error_while_opening,
        &loss_while_opening,
        &another_camera_next_time,
        &connect_times_out,
        &answer_crosses_time_out,
        &disconnect_crosses_time_out,
        &error_crosses_time_out,
        &quit_crosses_time_out,
        &machine_stands_still,
        &machine_stands_still_again,
        &camera_comes_back,
        &loss_told_by_two_threads,
        &disconnect_crosses_loss,
        &new_session_crosses_old_loss,
        &word_while_session_drops,
        &file_type_while_session_drops,
        &card_pulled_while_applying,
        &notices_in_a_storm,
        &settings_cross_session,
        &capture_and_download,
        &capture_while_camera_goes,
        &downloads_while_folder_changes,
        &signal_during_capture,
        &exit_under_fire,
        &exit_under_fire_of_all,
        &callbacks_after_release,
        &sdk_hangs_at_exit,
        &host_stops_reading,
        &host_reads_late,
        &quit_while_opening,
        &exit_on_a_slow_machine,
    };
    return all;
}

const Scene* scene_named(const std::vector<const Scene*>& scenes, std::string_view name) {
    for (const Scene* scene : scenes) {
        if (scene->name == name) {
            return scene;
        }
    }
    return nullptr;
}

const Scene* scene_named(std::string_view name) {
    for (const auto& all : {scenes(), fault_tours(), cable_scenes()}) {
        if (const Scene* const scene = scene_named(all, name)) {
            return scene;
        }
    }
    return nullptr;
}

}  // namespace explore
