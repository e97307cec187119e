// Any bytes on standard input, in pieces of any size: what the reader queues.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tests/worker/fuzz/bytes.h"
#include "tests/worker/fuzz/given_input.h"
#include "tests/worker/fuzz/require.h"
#include "tests/worker/processes/commands_in.h"
#include "threads/command_queue.h"

namespace {

constexpr std::size_t pieces[] = {65536, 1, 2, 3, 100, 4093, 4094, 4095, 4096, 4097, 8191};
constexpr std::size_t runs[] = {2,    3,    100,  4090, 4092, 4093, 4094,
                                4095, 4096, 4097, 8189, 8190, 8191};

// Bytes as they come and, because a fuzzer finds long lines slowly, runs of one byte.
std::string lines_of(Bytes& bytes) {
    constexpr std::uint8_t run_follows = 0xF1;
    int runs_left = 3;
    std::string lines;
    while (bytes.left()) {
        const std::uint8_t byte = bytes.byte();
        if (byte == run_follows && runs_left-- > 0) {
            const std::size_t length = bytes.one_of(runs);
            lines.append(length, static_cast<char>(bytes.byte()));
        } else {
            lines += static_cast<char>(byte);
        }
    }
    return lines;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    main_thread.assume();
    Bytes bytes(data, size);
    const std::size_t piece = bytes.one_of(pieces);
    const std::string lines = lines_of(bytes);
    // Long lines in single bytes only take longer than long lines in larger pieces.
    constexpr std::size_t most_pieces = 100;
    read_as_input(lines, std::max(piece, lines.size() / most_pieces));
    for (const std::string& command : commands_in(lines)) {
        require(next_command() == command, "the reader queues the lines as the rules say");
    }
    require(next_command() == std::nullopt, "the reader queues nothing else");
    return 0;
}
