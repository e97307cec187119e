// Signals that a command acts on.
#pragma once

#include <functional>
#include <initializer_list>

namespace tether {

// Blocks them in the calling thread, and so in all that it starts later: called before any other
// thread is started. A thread of its own calls `act` with each that comes, until the process ends.
// One that this process was told to ignore stays ignored: nohup works.
void act_on_signals(std::initializer_list<int> numbers, std::function<void(int)> act);

}  // namespace tether
