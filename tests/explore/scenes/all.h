#pragma once

#include "tests/explore/scene.h"

namespace explore {

// scenes/start_and_end.cpp
extern const Scene start_and_quit;
extern const Scene end_of_input;
extern const Scene input_closed_at_once;
extern const Scene sdk_does_not_start;
extern const Scene sdk_does_not_start_unread;
extern const Scene lines_behind_quit;
extern const Scene signal_at_any_moment;
extern const Scene hangup_ignored_by_host;
extern const Scene interrupt_ignored_by_host;
extern const Scene termination_ignored_by_host;
extern const Scene signals_pile_up;
extern const Scene waking_for_nothing;

// scenes/connecting.cpp
extern const Scene connect_answered;
extern const Scene connect_returns_late;
extern const Scene connect_refused;
extern const Scene no_camera_found;
extern const Scene disconnect_crosses_answer;
extern const Scene error_while_opening;
extern const Scene loss_while_opening;
extern const Scene another_camera_next_time;

// scenes/timing_out.cpp
extern const Scene connect_times_out;
extern const Scene answer_crosses_time_out;
extern const Scene disconnect_crosses_time_out;
extern const Scene error_crosses_time_out;
extern const Scene quit_crosses_time_out;
extern const Scene machine_stands_still;
extern const Scene machine_stands_still_again;

// scenes/losing.cpp
extern const Scene camera_comes_back;
extern const Scene loss_told_by_two_threads;
extern const Scene disconnect_crosses_loss;
extern const Scene new_session_crosses_old_loss;

// scenes/settings.cpp
extern const Scene word_while_session_drops;
extern const Scene file_type_while_session_drops;
extern const Scene card_pulled_while_applying;
extern const Scene notices_in_a_storm;
extern const Scene settings_cross_session;

// scenes/pictures.cpp
extern const Scene capture_and_download;
extern const Scene capture_while_camera_goes;
extern const Scene downloads_while_folder_changes;
extern const Scene signal_during_capture;

// scenes/leaving.cpp
extern const Scene exit_under_fire;
extern const Scene exit_under_fire_of_all;
extern const Scene callbacks_after_release;
extern const Scene sdk_hangs_at_exit;
extern const Scene host_stops_reading;
extern const Scene host_reads_late;
extern const Scene quit_while_opening;
extern const Scene exit_on_a_slow_machine;

}  // namespace explore
