#pragma once

// One call of the application: whether it may be made at all, how the scene lets it go wrong, and
// its line in the journal.

#include <optional>
#include <string>

#include "simulator/sdk/faults.h"
#include "simulator/sdk/lock.h"
#include "simulator/sdk/surface.h"

namespace camera_sim {

// Stops the process unless the SDK is started and this is the thread that started it.
void expect_thread(const std::string& function) SIM_REQUIRES(g_lock);

class Call {
  public:
    // Comes back late, or not before `resume`, when the scene says so; the lock is given up then.
    // `arguments` stand behind the name in the journal; `code` is what a fault may name.
    Call(Hold& hold, const std::string& function, const std::string& arguments = "",
         std::optional<CrInt32u> code = std::nullopt) SIM_REQUIRES(g_lock);

    // The camera's result, or the scene's in its place, in the journal with what the call gave.
    CrInt32u answer(CrInt32u result, const std::string& given = "") SIM_REQUIRES(g_lock);
    bool answer_bool(bool result) SIM_REQUIRES(g_lock);
    void answer_nothing() SIM_REQUIRES(g_lock);

    const Response& fault() const {
        return fault_;
    }
    // The scene answers in the camera's place, so that the camera does nothing.
    bool refused() const {
        return fault_.answers.has_value();
    }

  private:
    void write_line(const std::string& result) SIM_REQUIRES(g_lock);

    Clock::time_point start_ = Clock::now();
    std::string text_;
    Response fault_;
};

}  // namespace camera_sim
