// Two takers would run two commands on the camera at once.

#include "threads/command_queue.h"

void take_one() {
#if !defined(MISUSE)
    main_thread.assume();
#endif
    next_command();
}
