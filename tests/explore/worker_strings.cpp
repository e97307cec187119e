// A part of the worker's library: what the C++ library keeps of std::string in itself, compiled
// like the worker's own sources, so that what it does to memory is seen. Which part that is differs
// from one C++ library to the next.

#include <string>

template class std::basic_string<char>;
