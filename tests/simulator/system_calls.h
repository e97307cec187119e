#pragma once

// System calls of the virtual camera that go through the tests, which can let one fail or do
// something just before it. Linux only: elsewhere a library calls its own.

#include <atomic>
#include <functional>

namespace system_calls {

// In place of the rename that replaces nothing, and of link: an errno value, or 0 for the call
// itself. Any thread.
extern std::function<int()> before_rename;
extern std::function<int()> before_link;

// After a bind that has worked, with the lock of the camera held.
extern std::function<void()> after_bind;

// How often accept has failed.
extern std::atomic<int> accepts_failed;

// None of the above.
void leave_alone();

}  // namespace system_calls
