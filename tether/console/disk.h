// What is asked of a disk that may not answer: a browser has six connections, and must not be left
// waiting with all of them.
#pragma once

#include <functional>

namespace console {

// Carries it out on a thread of its own. False when that takes too long: the thread is left behind
// then, so `work` must own whatever it touches. From any thread.
bool done_in_time(std::function<void()> work);

}  // namespace console
