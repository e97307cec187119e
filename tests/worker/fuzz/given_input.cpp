#include "tests/worker/fuzz/given_input.h"

#include <algorithm>
#include <cstdio>
#include <sys/types.h>

#include "program/reader.h"

namespace {

struct Source {
    const std::string& bytes;
    std::size_t piece;
    std::size_t given = 0;
};

ssize_t give(void* cookie, char* buffer, std::size_t size) {
    Source& source = *static_cast<Source*>(cookie);
    const std::size_t count = std::min({size, source.piece, source.bytes.size() - source.given});
    std::copy_n(source.bytes.data() + source.given, count, buffer);
    source.given += count;
    return static_cast<ssize_t>(count);
}

}  // namespace

void read_as_input(const std::string& bytes, std::size_t piece) {
    Source source{bytes, piece};
    std::FILE* const before = stdin;
    stdin = fopencookie(&source, "r", {give, nullptr, nullptr, nullptr});
    reader_thread();
    std::fclose(stdin);
    stdin = before;
}
