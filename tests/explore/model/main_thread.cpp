// One step of the main thread, whatever it is doing.

#include "tests/explore/model/steps.h"

namespace explore::model {

namespace {

// Nobody outside can see the step.
bool is_unseen(At at) {
    switch (at) {
        case At::next_command:
        case At::connect:
        case At::choose:
        case At::arm:
        case At::connect_refused:
        case At::disconnect:
        case At::disconnect_begins:
        case At::disconnect_looks:
        case At::disconnect_clears:
        case At::timed_out:
        case At::timed_out_closes:
        case At::set_folder:
        case At::folder_looks:
        case At::save_info:
        case At::set_word:
        case At::store:
        case At::store_priority_done:
        case At::store_card:
        case At::store_second_card:
        case At::store_card_known:
        case At::store_written:
        case At::card_check:
        case At::card_check_read:
        case At::card_check_known:
        case At::set_file_type:
        case At::file_type_written:
        case At::file_type_check:
        case At::pair:
        case At::pair_read:
        case At::pair_written:
        case At::apply_settings:
        case At::apply_save_info_done:
        case At::apply_store_done:
        case At::capture:
        case At::write_retry:
        case At::sleeping:
        case At::loop_ended:
            return true;
        default:
            return false;
    }
}

bool is_call(At at) {
    switch (at) {
        case At::init_call:
        case At::version_call:
        case At::enum_call:
        case At::none_found_release:
        case At::none_chosen_release:
        case At::connect_call:
        case At::connect_release_list:
        case At::disconnect_call:
        case At::release_device_call:
        case At::timed_out_call:
        case At::save_info_call:
        case At::half_press_call:
        case At::press_call:
        case At::lift_call:
        case At::let_go_call:
        case At::write_call:
        case At::read_call:
        case At::read_release_call:
        case At::release_call:
            return true;
        default:
            return false;
    }
}

bool is_answer(At at) {
    switch (at) {
        case At::init_answer:
        case At::version_answer:
        case At::enum_answer:
        case At::none_found_released:
        case At::none_chosen_released:
        case At::connect_released_list:
        case At::connect_answer:
        case At::disconnect_answer:
        case At::release_device_answer:
        case At::timed_out_answer:
        case At::save_info_answer:
        case At::half_press_answer:
        case At::press_answer:
        case At::lift_answer:
        case At::let_go_answer:
        case At::write_answer:
        case At::read_answer:
        case At::read_release_answer:
        case At::release_answer:
            return true;
        default:
            return false;
    }
}

}  // namespace

Waits main_waits_for(const State& state) {
    if (state.at == At::none_found_log) {
        const bool told = state.result != 0 && state.result != state.last_enum_error;
        return told ? Waits::line : Waits::nothing;
    }
    if (is_unseen(state.at)) {
        return Waits::nothing;
    }
    if (is_call(state.at)) {
        return Waits::call;
    }
    return is_answer(state.at) ? Waits::answer : Waits::line;
}

bool step_main(State& state, const Event* event, Time until) {
    if ((main_waits_for(state) != Waits::nothing) != (event != nullptr)) {
        return false;
    }
    switch (state.at) {
        case At::next_command:
            if (state.queued > 0) {
                return begin_command(state);
            }
            return state.input_over && goes_on(state, At::loop_ended);
        case At::plain_reply:
            return plain_reply(state, event);
        case At::sleeping:
            if (until < state.wake) {
                return false;
            }
            state.wake = 0;
            return done(state);
        default:
            break;
    }
    if (state.at <= At::ready_line) {
        return start_up(state, event);
    }
    if (state.at <= At::connect_error_line) {
        return connect(state, event);
    }
    if (state.at <= At::disconnect_line) {
        return disconnect(state, event);
    }
    if (state.at <= At::timed_out_answer) {
        return connect_timed_out(state, event);
    }
    if (state.at <= At::save_info_error_line) {
        return folder(state, event);
    }
    if (state.at <= At::store_line) {
        return save_destination(state, event);
    }
    if (state.at <= At::card_check_line) {
        return card_check(state, event);
    }
    if (state.at <= At::pair_log) {
        return file_type(state, event);
    }
    if (state.at <= At::apply_store_done) {
        return apply_settings(state);
    }
    if (state.at <= At::capture_line) {
        return capture(state, event);
    }
    if (state.at <= At::read_release_answer) {
        return property_access(state, event);
    }
    return shutdown(state, event);
}

}  // namespace explore::model
