#include "simulator/sdk/call.h"

#include "simulator/camera/state.h"
#include "simulator/sdk/journal.h"
#include "simulator/sdk/strictness.h"
#include "simulator/sdk/text.h"

namespace camera_sim {

void expect_thread(const std::string& function) {
    if (!state().started) {
        stop(function + " was called " + (state().released ? "after Release" : "before Init"));
    }
    if (std::this_thread::get_id() != state().main_thread) {
        stop(function + (on_sdk_thread() ? " was called from inside a callback"
                                         : " was called from another thread than Init"));
    }
}

Call::Call(Hold& hold, const std::string& function, const std::string& arguments,
           std::optional<CrInt32u> code)
    : text_(arguments.empty() ? function : function + " " + arguments) {
    expect_thread(function);
    state().last_use = start_;
    fault_ = take_fault(function, code);
    if (fault_.hangs) {
        journal(start_, std::nullopt, text_, "hangs");
        const unsigned resumes = state().resumes;
        while (state().resumes == resumes) {
            hold.wait(g_changed);
        }
    }
    if (fault_.late > Duration::zero()) {
        hold.sleep(fault_.late);
    }
}

CrInt32u Call::answer(CrInt32u result, const std::string& given) {
    result = fault_.answers.value_or(result);
    write_line(hex(result) + (given.empty() ? "" : " " + given));
    return result;
}

bool Call::answer_bool(bool result) {
    result = fault_.answers ? *fault_.answers != 0 : result;
    write_line(result ? "true" : "false");
    return result;
}

void Call::answer_nothing() {
    write_line("-");
}

// A call that hung has its line already.
void Call::write_line(const std::string& result) {
    if (!fault_.hangs) {
        journal(start_, Clock::now() - start_, text_, result);
    }
}

}  // namespace camera_sim
