#pragma once

#include <cstddef>

#if !defined(__x86_64__) || defined(EXPLORE_UCONTEXT)
#define EXPLORE_OWN_SWITCH 0
#include <ucontext.h>
#else
#define EXPLORE_OWN_SWITCH 1
#endif

namespace explore {

// A stack that takes turns with others on one system thread. On x86-64 a turn costs a few
// nanoseconds, because nothing but the registers that a call preserves is put away; elsewhere
// ucontext does it.
class Context {
  public:
    // The next turn begins in `entry`, at the top of this stack. `entry` never returns.
    void prepare(char* stack, std::size_t size, void (*entry)());

    // Puts the running stack away in `from` and goes on with this one.
    void resume(Context& from);

  private:
#if EXPLORE_OWN_SWITCH
    void* stack_pointer_ = nullptr;
#else
    ucontext_t context_;
#endif
};

}  // namespace explore
