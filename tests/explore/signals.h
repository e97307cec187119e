#pragma once

namespace explore {

// A signal for the process, from outside.
void raise_signal(int number);

}  // namespace explore
