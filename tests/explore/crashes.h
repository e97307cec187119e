#pragma once

namespace explore {

// From now on a worker that crashes ends its run as a failure, and not this program.
void catch_crashes();

}  // namespace explore
