// Standard input made of bytes in memory, that come in pieces as from a pipe.
#pragma once

#include <cstddef>
#include <string>

// Reads all of them with the worker's reader, in this thread; no read gets more than `piece`
// bytes. What the reader made of them is in the queue then, and the input has ended.
void read_as_input(const std::string& bytes, std::size_t piece);
