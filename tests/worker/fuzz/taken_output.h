// Standard output taken in memory: each line as it was written and flushed in one piece.
#pragma once

#include <string>
#include <vector>

// Once, before the first line.
void take_output();

// The lines since the last call, without their line feeds. Requires each to begin with a key of
// the protocol, and those that carry a name or a path to carry it escaped.
std::vector<std::string> taken_lines();
