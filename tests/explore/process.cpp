#include "tests/explore/process.h"

namespace explore {

Process process;

void begin_process() {
    process.input.clear();
    process.input_read = 0;
    process.input_closed = false;
    process.input_locked = false;
    process.input_lockable = true;
    process.buffer.clear();
    process.buffer_writer = -1;
    process.output.clear();
    process.output_full = false;
    process.pending_signals = 0;
    process.ignored_signals = 0;
    forget_exit_functions();
    forget_waiters();
}

}  // namespace explore
