#include "simulator/camera/shots.h"

#include <ctime>

#include "simulator/camera/landing/landing.h"
#include "simulator/camera/state.h"
#include "simulator/camera/timeline.h"
#include "simulator/camera/transfer.h"
#include "simulator/sdk/delivery.h"

namespace camera_sim {
namespace {

Shooting& shooting() SIM_REQUIRES(g_lock) {
    return state().shooting;
}

// The camera's own choice rules while no session is open.
CrInt64u destination_in_force() SIM_REQUIRES(g_lock) {
    return state().session.stage == Stage::open ? body().value(property::save_destination)
                                                : destination::card;
}

bool may_take(CrInt64u destination) SIM_REQUIRES(g_lock) {
    const bool needs_card = destination != destination::computer;
    if (needs_card && body().card != Card::in) {
        callback::warning(body().card == Card::full ? warning::card_full : warning::no_card);
        return false;
    }
    if (shooting().in_buffer >= state().setup.buffer) {
        callback::warning(warning::buffer_full);
        return false;
    }
    return true;
}

void store(const Shot& shot) SIM_REQUIRES(g_lock) {
    if (shot.destination != destination::computer) {
        ++body().on_card;
    }
    const bool sent = shot.destination != destination::card &&
                      state().session.stage == Stage::open && !state().session.folder.empty();
    if (sent) {
        send_to_computer(shot);
    } else {
        finish(shot, shot.destination == destination::computer);
    }
}

// Takes the picture that is counted as under way already.
void expose() SIM_REQUIRES(g_lock) {
    Shot shot;
    shot.destination = destination_in_force();
    shot.delivering_thread = delivering_thread();
    if (!may_take(shot.destination)) {
        --shooting().under_way;
        g_changed.notify_all();
        return;
    }
    ++shooting().in_buffer;
    shot.taken = shooting().taken++;
    shot.number = body().next_number;
    shot.passed = body().passed;
    shot.counter_named = body().counter_named;
    body().next_number = number_after(shot.number);
    shot.type = body().value(property::file_type);
    shot.time_seconds = std::time(nullptr);
    after(state().setup.exposure, [shot]() SIM_REQUIRES(g_lock) { store(shot); });
}

void expose_if_ready() SIM_REQUIRES(g_lock) {
    if (shooting().focused && shooting().wanted) {
        shooting().wanted = false;
        ++shooting().under_way;
        expose();
    }
}

void start_focusing() SIM_REQUIRES(g_lock) {
    if (shooting().focusing || shooting().focused || !state().setup.can_focus) {
        return;
    }
    shooting().focusing = true;
    const unsigned round = ++shooting().focus_round;
    after(state().setup.focus, [round]() SIM_REQUIRES(g_lock) {
        if (shooting().focus_round == round) {
            shooting().focusing = false;
            shooting().focused = true;
            expose_if_ready();
        }
    });
}

void stop_focusing() SIM_REQUIRES(g_lock) {
    if (!shooting().half_way && !shooting().down) {
        shooting().focusing = false;
        shooting().focused = false;
        ++shooting().focus_round;
    }
}

}  // namespace

void hold_half_way(bool held) {
    shooting().half_way = held;
    if (held) {
        start_focusing();
    } else {
        stop_focusing();
    }
}

void hold_down(bool held) {
    const bool pressed = held && !shooting().down;
    shooting().down = held;
    if (held) {
        shooting().wanted = shooting().wanted || pressed;
        start_focusing();
        expose_if_ready();
    } else {
        shooting().wanted = false;
        stop_focusing();
        g_changed.notify_all();
    }
}

void press_shutter() {
    if (!state().setup.can_focus) {
        return;
    }
    ++shooting().under_way;
    const int thread = delivering_thread();
    after(state().setup.focus, [thread]() SIM_REQUIRES(g_lock) {
        const DeliveringThread from(thread);
        expose();
    });
}

void finish(const Shot& shot, bool stays_on_camera) {
    if (stays_on_camera && shot.destination == destination::computer) {
        ++body().kept;
    }
    --shooting().in_buffer;
    --shooting().under_way;
    g_changed.notify_all();
}

void let_go() {
    shooting().half_way = false;
    shooting().down = false;
    shooting().wanted = false;
    stop_focusing();
}

bool shots_under_way() {
    return shooting().under_way > 0 || (shooting().wanted && shooting().focusing);
}

}  // namespace camera_sim
