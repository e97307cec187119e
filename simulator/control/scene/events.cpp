// The verbs for what happens to a camera.

#include <algorithm>
#include <utility>

#include "simulator/camera/session.h"
#include "simulator/camera/shots.h"
#include "simulator/camera/state.h"
#include "simulator/camera/timeline.h"
#include "simulator/control/scene/language.h"
#include "simulator/control/scene/words.h"
#include "simulator/sdk/delivery.h"

namespace camera_sim {
namespace {

bool a_body(Words& words) SIM_REQUIRES(g_lock) {
    if (words.purpose() == Words::For::doing && state().session.body >= state().bodies.size()) {
        words.wrong("there is no camera");
        return false;
    }
    return words.finished();
}

bool in_session() SIM_REQUIRES(g_lock) {
    return state().session.stage == Stage::open || state().session.stage == Stage::opening;
}

void change_card(Words& words) SIM_REQUIRES(g_lock) {
    const Card card = read_card(words);
    if (a_body(words)) {
        report_change(body().put_card(card));
    }
}

// The camera leaves the bus; an SDK that reconnects waits for it.
void leave(bool reconnecting) SIM_REQUIRES(g_lock) {
    if (state().session.stage == Stage::open && reconnecting) {
        happen(Happening::gone_for_a_while);
    } else if (in_session() || state().session.reconnecting) {
        happen(Happening::gone, reason::unplugged);
    }
}

void come_back() SIM_REQUIRES(g_lock) {
    if (state().session.reconnecting && body().reachable()) {
        happen(Happening::back);
    }
}

void unplug(Words& words) SIM_REQUIRES(g_lock) {
    const bool reconnecting = words.take("reconnecting");
    if (!a_body(words)) {
        return;
    }
    if (!std::exchange(body().plugged, false) && !state().session.reconnecting) {
        words.wrong("the camera is unplugged already");
        return;
    }
    leave(reconnecting);
}

void plug(Words& words) SIM_REQUIRES(g_lock) {
    if (!a_body(words)) {
        return;
    }
    if (std::exchange(body().plugged, true)) {
        words.wrong("the camera is plugged in already");
        return;
    }
    come_back();
}

void flap(Words& words) SIM_REQUIRES(g_lock) {
    const CrInt32u times = words.count("N");
    if (!a_body(words)) {
        return;
    }
    if (state().session.stage != Stage::open) {
        words.wrong("no session is open");
        return;
    }
    for (CrInt32u time = 0; time < times; ++time) {
        happen(Happening::gone_for_a_while);
        happen(Happening::back);
    }
}

void fall_asleep() SIM_REQUIRES(g_lock) {
    if (!std::exchange(body().asleep, true)) {
        leave(true);
    }
}

void look_whether_idle(Duration delay) SIM_REQUIRES(g_lock);

// Looks again when the camera could have been idle for long enough. `round`: of the `sleep after`
// that it works for.
void sleep_when_idle(unsigned round) SIM_REQUIRES(g_lock) {
    const Duration idle_for = Clock::now() - state().last_use;
    const Duration limit = state().setup.sleep_after;
    if (round != state().sleep_round || limit == Duration::zero() ||
        state().session.body >= state().bodies.size()) {
        return;
    }
    if (shots_under_way() || body().asleep) {
        state().last_use = Clock::now();
        look_whether_idle(limit);
    } else if (idle_for >= limit) {
        fall_asleep();
        look_whether_idle(limit);
    } else {
        look_whether_idle(limit - idle_for);
    }
}

// However short the time: a thread that looks without a pause lets nobody else have the lock.
void look_whether_idle(Duration delay) {
    constexpr Duration shortest = std::chrono::milliseconds(1);
    after(std::max(delay, shortest),
          [round = state().sleep_round]() SIM_REQUIRES(g_lock) { sleep_when_idle(round); });
}

void sleep(Words& words) SIM_REQUIRES(g_lock) {
    if (words.take("after")) {
        const Duration idle = words.duration("T");
        if (a_body(words)) {
            state().setup.sleep_after = idle;
            state().last_use = Clock::now();
            ++state().sleep_round;
            look_whether_idle(idle);
        }
    } else if (a_body(words)) {
        fall_asleep();
    }
}

void wake(Words& words) SIM_REQUIRES(g_lock) {
    if (a_body(words) && std::exchange(body().asleep, false)) {
        state().last_use = Clock::now();
        come_back();
    }
}

void dial(Words& words) SIM_REQUIRES(g_lock) {
    CrInt64u value = 0;
    if (words.take("jpeg")) {
        value = file_type::jpeg;
    } else if (words.take("raw")) {
        value = file_type::raw;
    } else if (words.take("both")) {
        value = file_type::raw_and_jpeg;
    } else if (words.take("heif")) {
        value = file_type::raw_and_heif;
    } else {
        value = words.number("jpeg, raw, both, heif or VALUE");
    }
    if (a_body(words)) {
        report_change(body().put(property::file_type, value));
    }
}

void press(Words& words) SIM_REQUIRES(g_lock) {
    if (!a_body(words)) {
        return;
    }
    if (body().asleep) {
        words.wrong("the camera is asleep");
        return;
    }
    state().last_use = Clock::now();
    press_shutter();
}

void set_counter(Words& words) SIM_REQUIRES(g_lock) {
    const CrInt32u number = words.code("N");
    if (number < 1 || number > 9999) {
        words.wrong("the counter goes from 1 to 9999");
    }
    if (a_body(words)) {
        body().set_counter(number);
    }
}

void set_property(Words& words) SIM_REQUIRES(g_lock) {
    const CrInt32u code = words.code("CODE");
    const CrInt64u value = words.number("VALUE");
    if (a_body(words)) {
        body().put(code, value);
    }
}

template <bool readable>
void make_readable(Words& words) SIM_REQUIRES(g_lock) {
    const CrInt32u code = words.code("CODE");
    if (a_body(words)) {
        body().properties[code].readable = readable;
    }
}

void be_busy(Words& words) SIM_REQUIRES(g_lock) {
    const Duration duration = words.duration("T");
    if (words.finished()) {
        state().busy_until = Clock::now() + duration;
    }
}

}  // namespace

const Verb event_verbs[] = {
    {"card", "in|out|full", change_card},
    {"dial", "jpeg|raw|both|heif|VALUE", dial},
    {"shutter", "", press},
    {"counter", "N", set_counter},
    {"unplug", "[reconnecting]", unplug},
    {"plug", "", plug},
    {"flap", "N", flap},
    {"sleep", "", sleep},
    {"sleep", "after T", sleep},
    {"wake", "", wake},
    {"busy", "T", be_busy},
    {"set", "CODE VALUE", set_property},
    {"unreadable", "CODE", make_readable<false>},
    {"readable", "CODE", make_readable<true>},
    {nullptr, nullptr, nullptr},
};

}  // namespace camera_sim
