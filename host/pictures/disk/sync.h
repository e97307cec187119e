// Waiting until the disk has it.
#pragma once

namespace host::pictures {

// An errno, or 0: also where the file system cannot be asked.
int sync_file(int file);

}  // namespace host::pictures
