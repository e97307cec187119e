#pragma once

// Body of the reader thread: turns standard input into queued commands, at most 4095 bytes each,
// until it ends.
void reader_thread();
