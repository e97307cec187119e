#pragma once

#include "threads/thread_annotations.h"

// The right to talk to the camera. Only main assumes it; every operation on the camera requires it,
// so that Clang refuses a callback or another thread that calls one. It costs nothing at run time.
class CAPABILITY("role") ThreadRole {
  public:
    void assume() const ASSERT_CAPABILITY(this) {}
};

inline constexpr ThreadRole main_thread;
