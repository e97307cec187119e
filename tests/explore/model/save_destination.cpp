// The save destination and the memory card.

#include "tests/explore/model/steps.h"

namespace explore::model {

namespace {

// The answers to the two card status properties make whether a card is in.
bool first_status(State& state, At second, At known) {
    const bool readable = state.readable && state.value != all_ones;
    const std::uint64_t value = state.value;
    forget_property(state);
    if (!readable) {
        state.card_in = state.card_present != 0;
        return goes_on(state, known);
    }
    state.card_in = value != 1;
    read_property(state, 0x070D, second);
    return true;
}

bool second_status(State& state, At known) {
    const std::uint64_t value = state.readable ? state.value : 1;
    forget_property(state);
    state.card_in = state.card_in != 0 || value != 1;
    return goes_on(state, known);
}

// What becomes of the destination, up to the answer of the camera.
bool store_destination(State& state, const Event* event) {
    const std::string& word = text_of(state.word);
    switch (state.at) {
        case At::set_word:
            state.word = keep(argument(state));
            if (!state.connected) {
                return command_done(state);
            }
            go_and_return(state, At::store, At::next_command);
            return true;
        case At::store:
            write_property(state, 0x011A, 2, At::store_priority_done);
            return true;
        case At::store_priority_done:
            return goes_on(state, state.result != 0 ? At::store_priority_line : At::store_card);
        case At::store_priority_line: {
            const std::string code = hex_code(state.result);
            return logs(state, event, "could not take PC Remote priority (" + code + ")",
                        At::store_card);
        }
        case At::store_card:
            forget_property(state);
            read_property(state, 0x0708, At::store_second_card);
            return true;
        case At::store_second_card:
            // Here with the first status read, and once more with the second.
            return state.code == 0x0708
                       ? first_status(state, At::store_second_card, At::store_card_known)
                       : second_status(state, At::store_card_known);
        case At::store_card_known: {
            state.card_present = state.card_in;
            state.card_fallback = state.card_in == 0 && word != "disk";
            state.card_in = 0;
            const std::uint64_t value = state.card_fallback || word == "disk" ? 1
                                        : word == "card"                      ? 2
                                                                              : 3;
            write_property(state, 0x0119, value, At::store_written);
            return true;
        }
        default:
            return goes_on(state, state.result != 0     ? At::store_error_line
                                  : state.card_fallback ? At::store_fallback_log
                                                        : At::store_log);
    }
}

// What the host is told about it.
bool report_destination(State& state, const Event* event) {
    const std::string& word = text_of(state.word);
    switch (state.at) {
        case At::store_error_line: {
            const std::string code = hex_code(state.result);
            forget_property(state);
            done(state);
            return logs(state, event,
                        "could not set the save destination (" + code +
                            ") — the camera keeps its own setting",
                        state.at);
        }
        case At::store_fallback_log:
            forget_property(state);
            return logs(state, event,
                        "no memory card in the camera — saving to the computer only (the setting "
                        "is \"" +
                            word + "\"; it returns when a card goes in)",
                        At::store_fallback_status);
        case At::store_fallback_status:
            return line(state, event,
                        "STATUS|No memory card in the camera — saving to the computer only",
                        At::store_fallback_line);
        case At::store_fallback_line:
            done(state);
            return line(state, event, "SAVE_DEST|disk", state.at);
        case At::store_log:
            forget_property(state);
            return logs(state, event, "save destination: " + word, At::store_line);
        default:
            done(state);
            return line(state, event, "SAVE_DEST|" + word, state.at);
    }
}

}  // namespace

bool save_destination(State& state, const Event* event) {
    return state.at <= At::store_written ? store_destination(state, event)
                                         : report_destination(state, event);
}

bool card_check(State& state, const Event* event) {
    switch (state.at) {
        case At::card_check:
            if (!state.connected) {
                return command_done(state);
            }
            read_property(state, 0x0708, At::card_check_read);
            return true;
        case At::card_check_read:
            return state.code == 0x0708
                       ? first_status(state, At::card_check_read, At::card_check_known)
                       : second_status(state, At::card_check_known);
        case At::card_check_known:
            if (state.card_present == state.card_in) {
                state.card_in = 0;
                return command_done(state);
            }
            return goes_on(state, At::card_check_line);
        default: {
            const bool in = state.card_in != 0;
            state.card_in = 0;
            state.depth = 0;
            state.back[state.depth++] = At::next_command;
            return logs(state, event, in ? "a memory card went in" : "the memory card came out",
                        At::store);
        }
    }
}

}  // namespace explore::model
