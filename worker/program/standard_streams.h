#pragma once

// Readies descriptors 0 to 2 and stdin for a process that may be started without some of them and
// may leave while a thread is asleep in a read. Main thread, before anything else opens a file and
// before the reader starts.
void prepare_standard_streams();
