// Standard streams that this process was started without.
#pragma once

namespace host {

// Opens /dev/null on each of the numbers 0, 1 and 2 that is closed: the next file opened would take
// it, and what is printed would be written into that file. Called first of all, while the process
// has one thread.
void open_closed_standard_streams();

}  // namespace host
