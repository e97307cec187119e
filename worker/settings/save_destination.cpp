// Where the camera puts its shots: the host's word, or the computer while no memory card is in.
// Main thread only.

#include "protocol/emit.h"
#include "session/sony_worker.h"
#include "settings/property_codes.h"

namespace {

// Words are compared whole and by case; whatever is not "disk" or "card" means both.
std::uint64_t destination_for(const std::string& word) {
    if (word == "disk") {
        return destination::computer;
    }
    if (word == "card") {
        return destination::memory_card;
    }
    return destination::both;
}

}  // namespace

bool SonyWorker::read_card_in() {
    const std::uint64_t first = read_prop(property::first_card_status, property::unreadable);
    if (first == property::unreadable) {
        // The last known state stands, and one not yet known counts as a card being in.
        return card_present != 0;
    }
    const std::uint64_t second = read_prop(property::second_card_status, card_status::no_card);
    return first != card_status::no_card || second != card_status::no_card;
}

void SonyWorker::set_save_destination(const std::string& word) {
    save_destination = word;
    if (connected) {
        apply_store_destination();
    }
}

void SonyWorker::apply_store_destination() {
    // Taken before every destination; it goes on without, because the camera may accept the
    // destination all the same.
    const std::uint32_t taken = write_prop(property::pc_remote_priority, priority::pc_remote);
    if (taken != sdk::ok) {
        emit_log("could not take PC Remote priority (" + hex_code(taken) + ")");
    }

    std::uint64_t value = destination_for(save_destination);
    const bool card_in = read_card_in();
    card_present = card_in ? 1 : 0;
    card_fallback = !card_in && save_destination != "disk";
    if (card_fallback) {
        value = destination::computer;
    }

    const std::uint32_t result = write_prop(property::save_destination, value);
    if (result != sdk::ok) {
        emit_log("could not set the save destination (" + hex_code(result) +
                 ") — the camera keeps its own setting");
        return;
    }
    if (card_fallback) {
        emit_log("no memory card in the camera — saving to the computer only (the setting is \"" +
                 save_destination + "\"; it returns when a card goes in)");
        emit("STATUS|No memory card in the camera — saving to the computer only");
        emit("SAVE_DEST|disk");
    } else {
        emit_log("save destination: " + save_destination);
        emit("SAVE_DEST|" + save_destination);
    }
}

void SonyWorker::card_check() {
    if (!connected) {
        return;
    }
    const bool card_in = read_card_in();
    if (card_present == (card_in ? 1U : 0U)) {
        return;
    }
    emit_log(card_in ? "a memory card went in" : "the memory card came out");
    apply_store_destination();
}
