#pragma once

#include <cstddef>

namespace explore {

// A stack that takes turns with others on one system thread. A turn costs a few nanoseconds,
// because nothing but the registers that a call preserves is put away.
class Context {
  public:
    // The next turn begins in `entry`, at the top of this stack. `entry` never returns.
    void prepare(char* stack, std::size_t size, void (*entry)());

    // Puts the running stack away in `from` and goes on with this one.
    void resume(Context& from);

  private:
    void* stack_pointer_ = nullptr;
};

}  // namespace explore
