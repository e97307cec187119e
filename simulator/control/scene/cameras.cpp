// The verbs for which cameras there are and how they answer Connect.

#include <utility>

#include "simulator/camera/session.h"
#include "simulator/camera/state.h"
#include "simulator/control/scene/language.h"
#include "simulator/control/scene/words.h"

namespace camera_sim {

Card read_card(Words& words) {
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

namespace {

// Cameras come and go only while nobody holds one.
bool nobody_holds_one(Words& words) SIM_REQUIRES(g_lock) {
    if (words.finished() && (state().session.handle != 0 || shots_under_way())) {
        words.wrong("cameras cannot be added or removed during a session or a shot");
    }
    return words.finished();
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
                body.put_card(read_card(words));
            } else if (words.take("serial")) {
                body.serial = words.text("TEXT");
            } else {
                break;
            }
        }
    }
    if (!nobody_holds_one(words)) {
        return;
    }
    if (!std::exchange(state().bodies_named, true)) {
        state().bodies.clear();
    }
    state().bodies.push_back(std::move(body));
}

void remove_cameras(Words& words) SIM_REQUIRES(g_lock) {
    if (nobody_holds_one(words)) {
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
            state().setup.can_focus = false;
        }
    } else {
        words.wrong("\"no\" stands before camera or focus");
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

}  // namespace

const Verb camera_verbs[] = {
    {"camera", "MODEL over TYPE [card in|out|full] [serial TEXT]", add_camera},
    {"camera", "missing", add_camera},
    {"no", "camera", no},
    {"no", "focus", no},
    {"answer", "normal|held|never|before return", set_answer},
    {"answer", "late T", set_answer},
    {"answer", "error CODE", set_answer},
    {"answer", "disconnected CODE", set_answer},
    {"answer", "now", set_answer},
    {nullptr, nullptr, nullptr},
};

}  // namespace camera_sim
