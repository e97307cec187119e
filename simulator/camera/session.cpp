#include "simulator/camera/session.h"

#include <utility>

#include "simulator/camera/shots.h"
#include "simulator/camera/state.h"
#include "simulator/camera/timeline.h"
#include "simulator/camera/transfer.h"
#include "simulator/sdk/delivery.h"

namespace camera_sim {

void happen(Happening what, CrInt32u code) {
    Session& session = state().session;
    ++session.round;
    look_at_session_again();
    let_go();
    switch (what) {
        case Happening::accepted:
            session.stage = Stage::opening;
            break;
        case Happening::answered:
        case Happening::back:
            session.stage = Stage::open;
            session.reconnecting = false;
            body().forget_session();
            callback::connected(state().setup.connection_version);
            break;
        case Happening::answered_error:
            session.stage = Stage::lost;
            callback::error(code);
            break;
        case Happening::answered_loss:
        case Happening::gone:
            session.stage = Stage::lost;
            session.reconnecting = false;
            callback::disconnected(code);
            break;
        case Happening::gone_for_a_while:
            session.stage = Stage::lost;
            session.reconnecting = true;
            callback::warning(warning::reconnecting);
            break;
        case Happening::disconnected:
            session.stage = Stage::closed;
            callback::disconnected(reason::asked_for);
            break;
        case Happening::handed_back: {
            const Session before = std::exchange(session, Session{});
            session.body = before.body;
            session.round = before.round;
            break;
        }
    }
}

void give_answer() {
    const Answer answer = state().session.answer;
    switch (answer.kind) {
        case Answer::Kind::error:
            happen(Happening::answered_error, answer.code);
            break;
        case Answer::Kind::disconnected:
            happen(Happening::answered_loss, answer.code);
            break;
        default:
            happen(Happening::answered);
    }
}

void open_session(Hold& hold, std::size_t body, IDeviceCallback* application,
                  CrDeviceHandle* handle) {
    Session& session = state().session;
    session.body = body;
    session.handle = ++state().last_handle;
    *handle = session.handle;
    state().application = application;
    happen(Happening::accepted);

    const Answer& answer = session.answer = state().answer;
    const unsigned round = session.round;
    const auto answer_after = [round](Duration delay) SIM_REQUIRES(g_lock) {
        after(delay, [round]() SIM_REQUIRES(g_lock) {
            if (state().session.round == round) {
                give_answer();
            }
        });
    };
    switch (answer.kind) {
        case Answer::Kind::held:
        case Answer::Kind::never:
            break;
        case Answer::Kind::late:
            answer_after(answer.late);
            break;
        case Answer::Kind::before_return:
            give_answer();
            wait_for_delivery(hold);
            break;
        case Answer::Kind::normal:
        case Answer::Kind::error:
        case Answer::Kind::disconnected:
            answer_after(state().setup.opening);
    }
}

CrInt32u judge_handle(CrDeviceHandle handle) {
    const Session& session = state().session;
    if (handle == 0 || handle != session.handle) {
        return result::no_such_handle;
    }
    switch (session.stage) {
        case Stage::open:
            return result::ok;
        case Stage::opening:
            return result::session_not_up;
        default:
            return result::camera_gone;
    }
}

void report_change(const std::vector<CrInt32u>& codes) {
    if (!codes.empty() && state().session.stage == Stage::open) {
        callback::properties(codes);
    }
}

}  // namespace camera_sim
