// Destination and type in force are what was asked, or a problem says which is not.
#include <utility>

#include "host/brain/brain.h"

namespace host::brain {

void Brain::settle(bool after_opening) {
    const bool already = after_opening && opening_.already;
    settling_ = {};
    settling_.opening = after_opening;
    settling_.already = already;
    probe_ = {};
    loss_in_doubt_ = false;
    if (after_opening && opening_.type) {
        type_.in_force = opening_.type;
    }
    camera_ = name_heard_.empty() ? "Camera" : name_heard_;
    enter(State::settling);
    ask_destination();
}

// Sent even when it is in force already: with a session it is answered, without one it is not, and
// that is how a CONNECTED out of a camera's name is found.
void Brain::ask_destination() {
    settling_.again = false;
    answered_ = false;
    destination_answer_.reset();
    refusal_.reset();
    say("SET_SAVE_DEST|" + std::string(word(*destination_.asked)));
    settling_.fence = fence();
}

void Brain::ask_type() {
    not_connected_ = false;
    refusal_.reset();
    say("SET_FILE_TYPE|" + std::string(word(*type_.asked)));
    settling_.fence = fence();
}

void Brain::ask_again() {
    if (settling_.type_is_next && !settling_.again) {
        return ask_type();
    }
    settling_.type_is_next = false;
    ask_destination();
}

void Brain::round_over() {
    settling_.fence = 0;
    if (settling_.again) {
        ask_again();
    } else if (settling_.type_is_next) {
        type_round_over();
    } else {
        destination_round_over();
    }
}

void Brain::destination_round_over() {
    if (!answered_) {
        return no_session_behind_it();
    }
    settling_.opening = false;
    if (destination_answer_ == destination_.asked) {
        clear(Code::destination_not_taken);
        clear(Code::card_missing);
    } else if (destination_answer_ == SaveDestination::disk) {
        clear(Code::destination_not_taken);
        miss_card();
    } else if (settling_.asked_again++ < times_.asked_again) {
        deadline_ = now_ + times_.between_asks;
        return;
    } else {
        raise({Code::destination_not_taken,
               "The camera does not take the save destination.",
               refusal_,
               {}});
    }
    settling_.asked_again = 0;
    settling_.type_is_next = true;
    if (type_.asked && !type_is_taken()) {
        return ask_type();
    }
    type_settled();
}

void Brain::type_round_over() {
    if (type_is_taken()) {
        return type_settled();
    }
    if (not_connected_) {
        settling_.type_is_next = false;
        return ask_destination();
    }
    if (settling_.asked_again++ < times_.asked_again) {
        deadline_ = now_ + times_.between_asks;
        return;
    }
    if (type_.in_force != type_.asked) {
        if (!refusal_) {
            type_.in_force.reset();  // it was asked of the camera, and nobody knows what came of it
        }
        raise({Code::file_type_not_taken,
               "The camera does not take the file type: set it there.",
               refusal_,
               {}});
    }
    settled();
}

// Of a pair the camera has to be asked for both halves, or it sends its own choice.
bool Brain::type_is_taken() const {
    return type_.in_force == type_.asked && !pair_refusal_;
}

void Brain::type_settled() {
    if (!pair_refusal_) {
        clear(Code::file_type_not_taken);
    }
    settled();
}

void Brain::settled() {
    failures_ = 0;
    was_ready_ = true;
    clear_camera_problems();
    enter(State::ready);
    reply_all(connects_, state());
}

void Brain::no_session_behind_it() {
    if (settling_.opening && !settling_.already && now_ < opening_.deadline) {
        // The camera that is being opened has a name that looks like an answer.
        camera_.reset();
        opening_.connected = false;
        enter(State::opening);
        deadline_ = opening_.deadline;
    } else if (settling_.opening) {
        fail_session({Code::camera_no_answer, "The camera does not answer.", {}, {}});
    } else {
        lose();
    }
}

void Brain::miss_card() {
    raise({Code::card_missing,
           "No memory card is in the camera: pictures come to the computer only.",
           {},
           {}});
}

// From here on a destination that changes is the camera's doing, such as a card that is taken out,
// and nobody asks again.
bool Brain::destination_is_settled() const {
    return state_ == State::ready || (state_ == State::settling && settling_.type_is_next);
}

void Brain::hear_save_dest(std::string_view text) {
    const std::optional<SaveDestination> destination = save_destination_of(text);
    const bool session =
        state_ == State::settling || state_ == State::ready || state_ == State::lost;
    if (!destination || !session) {
        return;
    }
    answered_ = true;
    destination_answer_ = destination;
    dirty_ = dirty_ || destination_.in_force != destination;
    destination_.in_force = destination;
    if (destination_is_settled()) {
        if (destination == destination_.asked) {
            clear(Code::card_missing);
            clear(Code::destination_not_taken);
        } else if (destination == SaveDestination::disk) {
            miss_card();
        }
    }
}

// A dial that a person turns is shown and left alone.
void Brain::hear_file_type(std::string_view text) {
    const std::optional<FileType> type = file_type_of(text);
    const bool session =
        state_ == State::settling || state_ == State::ready || state_ == State::lost;
    if (type && state_ == State::opening) {
        opening_.type = type;
    }
    if (!type || !session) {
        return;
    }
    if (shot_ && shot_->step >= ShotInHand::Step::firing && shot_->type != type) {
        shot_->type.reset();
    }
    dirty_ = dirty_ || type_.in_force != type;
    type_.in_force = type;
    // Of a pair the worker asks for both halves now, and says so when that is refused again.
    const bool pair_was_refused = std::exchange(pair_refusal_, {}).has_value();
    if (type == type_.asked || (pair_was_refused && !type_.asked)) {
        clear(Code::file_type_not_taken);
    }
}

void Brain::hear_pair_refused(std::uint32_t code) {
    if (state_ != State::settling && state_ != State::ready && state_ != State::lost) {
        return;
    }
    pair_refusal_ = code;
    raise({Code::file_type_not_taken,
           "The camera does not take the request for both halves of a pair: it sends one of them.",
           code,
           {}});
}

}  // namespace host::brain
