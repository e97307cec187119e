// The verbs that set a scene up: the cameras, how fast they are, how Connect is answered, faults.

#include <algorithm>
#include <utility>

#include "simulator/faults.h"
#include "simulator/scene_language.h"
#include "simulator/session.h"
#include "simulator/state.h"
#include "simulator/words.h"

namespace camera_sim {
namespace {

Setup& setup() SIM_REQUIRES(g_lock) {
    return state().setup;
}

Card card(Words& words) {
    if (words.take("in")) {
        return Card::in;
    }
    if (words.take("out")) {
        return Card::out;
    }
    if (!words.take("full")) {
        words.wrong("a card is in, out or full");
    }
    return Card::full;
}

void add_camera(Words& words) SIM_REQUIRES(g_lock) {
    Body body;
    if (words.take("missing")) {
        body.missing = true;
    } else {
        body.model = words.text_or_null("MODEL");
        if (!words.take("over")) {
            words.wrong("a camera is: MODEL over TYPE, card in|out|full, serial TEXT");
        }
        body.connection = words.text_or_null("TYPE");
        while (words.left() && words.error().empty()) {
            if (words.take("card")) {
                body.put_card(card(words));
            } else if (words.take("serial")) {
                body.serial = words.text("TEXT");
            } else {
                break;
            }
        }
    }
    if (!words.finished()) {
        return;
    }
    if (state().session.handle != 0) {
        words.wrong("cameras cannot be added during a session");
        return;
    }
    if (!std::exchange(state().bodies_named, true)) {
        state().bodies.clear();
    }
    state().bodies.push_back(std::move(body));
}

void remove_cameras(Words& words) SIM_REQUIRES(g_lock) {
    if (state().session.handle != 0) {
        words.wrong("cameras cannot be removed during a session");
    } else if (words.finished()) {
        state().bodies_named = true;
        state().bodies.clear();
        state().session.body = 0;
    }
}

// `no camera` and `no focus`.
void no(Words& words) SIM_REQUIRES(g_lock) {
    if (words.take("camera")) {
        remove_cameras(words);
    } else if (words.take("focus")) {
        if (words.finished()) {
            setup().can_focus = false;
        }
    } else {
        words.wrong("\"no\" stands before camera or focus");
    }
}

void set_timing(Words& words) SIM_REQUIRES(g_lock) {
    const bool instant = words.take("instant");
    if (!instant && !words.take("real")) {
        words.wrong("timing is instant or real");
    }
    if (!words.finished()) {
        return;
    }
    const Setup real;
    setup().looking = instant ? Duration::zero() : real.looking;
    setup().opening = instant ? Duration::zero() : real.opening;
    setup().focus = instant ? Duration::zero() : real.focus;
    setup().exposure = instant ? Duration::zero() : real.exposure;
    setup().usb_rate = instant ? 0 : real.usb_rate;
}

template <Duration Setup::*time>
void set_time(Words& words) SIM_REQUIRES(g_lock) {
    const Duration duration = words.duration("T");
    if (words.finished()) {
        setup().*time = duration;
    }
}

void set_focus(Words& words) SIM_REQUIRES(g_lock) {
    set_time<&Setup::focus>(words);
    if (words.error().empty()) {
        setup().can_focus = true;
    }
}

void set_version(Words& words) SIM_REQUIRES(g_lock) {
    const CrInt32u version = words.code("VERSION");
    if (words.finished()) {
        setup().version = version;
    }
}

void set_connection_version(Words& words) SIM_REQUIRES(g_lock) {
    if (!words.take("version")) {
        words.wrong("connection version N");
    }
    const bool negative = words.take("-1");
    const CrInt32u version = negative ? 0xFFFFFFFF : words.code("N");
    if (words.finished()) {
        setup().connection_version = static_cast<CrInt32>(version);
    }
}

void set_seed(Words& words) SIM_REQUIRES(g_lock) {
    const CrInt32u seed = words.code("N");
    if (words.finished()) {
        setup().seed = seed;
    }
}

void set_usb_rate(Words& words) SIM_REQUIRES(g_lock) {
    const std::string rate = words.word("RATE");
    const std::size_t unit = rate.find("MB/s");
    const auto megabytes = to_number(std::string_view(rate).substr(0, unit));
    if (unit == std::string::npos || unit + 4 != rate.size() || !megabytes || *megabytes == 0 ||
        *megabytes > 100'000) {
        words.wrong("a rate is like 40MB/s");
    }
    if (words.finished()) {
        setup().usb_rate = *megabytes * 1'000'000;
    }
}

void set_buffer(Words& words) SIM_REQUIRES(g_lock) {
    const CrInt32u shots = words.code("N");
    if (shots == 0) {
        words.wrong("a buffer holds at least 1 shot");
    }
    if (words.finished()) {
        setup().buffer = shots;
    }
}

// A width or a height, 0 when the text is none.
int picture_side(std::string_view text) {
    const std::uint64_t side = to_number(text).value_or(0);
    return side <= 20'000 ? static_cast<int>(side) : 0;
}

void set_picture(Words& words) SIM_REQUIRES(g_lock) {
    const std::string size = words.word("SIZE");
    const std::size_t times = std::min(size.find('x'), size.size());
    const int width = picture_side(std::string_view(size).substr(0, times));
    const int height =
        picture_side(std::string_view(size).substr(std::min(times + 1, size.size())));
    if (width == 0 || height == 0) {
        words.wrong("a picture's size is like 6000x4000, at most 20000x20000");
    }
    if (words.finished()) {
        setup().width = width;
        setup().height = height;
    }
}

void set_answer(Words& words) SIM_REQUIRES(g_lock) {
    Answer answer;
    bool now = false;
    if (words.take("now")) {
        now = true;
    } else if (words.take("held")) {
        answer.kind = Answer::Kind::held;
    } else if (words.take("never")) {
        answer.kind = Answer::Kind::never;
    } else if (words.take("late")) {
        answer.kind = Answer::Kind::late;
        answer.late = words.duration("T");
    } else if (words.take("before")) {
        answer.kind = Answer::Kind::before_return;
        if (!words.take("return")) {
            words.wrong("answer before return");
        }
    } else if (words.take("error")) {
        answer.kind = Answer::Kind::error;
        answer.code = words.code("CODE");
    } else if (words.take("disconnected")) {
        answer.kind = Answer::Kind::disconnected;
        answer.code = words.code("CODE");
    } else if (!words.take("normal")) {
        words.wrong(
            "an answer is normal, held, now, late T, before return, never, error CODE or "
            "disconnected CODE");
    }
    if (!words.finished()) {
        return;
    }
    if (!now) {
        state().answer = answer;
    } else if (state().session.stage == Stage::opening &&
               state().session.answer.kind == Answer::Kind::held) {
        give_answer();
    } else {
        words.wrong("no answer is held");
    }
}

void clear_faults(Words& words) SIM_REQUIRES(g_lock) {
    if (!words.take("faults")) {
        words.wrong("clear faults");
    }
    if (words.finished()) {
        state().faults.clear();
    }
}

void resume(Words& words) SIM_REQUIRES(g_lock) {
    if (words.finished()) {
        ++state().resumes;
        g_changed.notify_all();
    }
}

}  // namespace

const Verb setup_verbs[] = {
    {"camera", add_camera},
    {"no", no},
    {"version", set_version},
    {"connection", set_connection_version},
    {"seed", set_seed},
    {"timing", set_timing},
    {"looking", set_time<&Setup::looking>},
    {"opening", set_time<&Setup::opening>},
    {"focus", set_focus},
    {"exposure", set_time<&Setup::exposure>},
    {"usb", set_usb_rate},
    {"buffer", set_buffer},
    {"picture", set_picture},
    {"answer", set_answer},
    {"next", add_next_fault},
    {"every", add_standing_fault},
    {"clear", clear_faults},
    {"resume", resume},
    {nullptr, nullptr},
};

}  // namespace camera_sim
