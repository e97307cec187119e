#pragma once

#include "tests/explore/camera.h"

// What every function of the SDK does when the worker calls it.
namespace explore {

// A call begins: the point at which others may go first, the check, the record, and the time that
// it takes. Strict: a call from another thread than main, or out of turn, ends the run.
Answer begin(Call call, std::uint64_t number = 0, std::uint64_t value = 0, Text text = 0,
             std::int64_t handle = 0);

// The call returns.
void end(Call call, std::uint64_t result, std::uint64_t value = 0, Text text = 0,
         bool lent = false);

// The result of a call that needs the open camera.
std::uint32_t result_for(const Answer& answer, std::int64_t handle);

}  // namespace explore
