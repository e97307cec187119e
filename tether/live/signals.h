// Signals that a command acts on.
#pragma once

#include <functional>
#include <vector>

namespace tether {

// SIGINT and SIGTERM, and SIGHUP unless this process was told to ignore it: nohup works.
std::vector<int> ending_signals();

// Blocks them in the calling thread, and so in all that it starts later: called before any other
// thread is started. A thread of its own calls `act` with each that comes, until the process ends.
// Also with one that this process was told to ignore, as a shell does with Ctrl-C for what it does
// not wait for: whoever sends it means it.
void act_on_signals(const std::vector<int>& numbers, std::function<void(int)> act);

}  // namespace tether
