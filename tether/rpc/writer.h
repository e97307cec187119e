// Writes messages to a client from a thread of its own: a client that does not read holds up
// nothing but that thread.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "host/process/clock.h"
#include "tether/rpc/outgoing.h"

namespace rpc {

// Every operation may be called from any thread, and none waits but flush().
class Writer {
  public:
    struct News {
        // A picture has been written out. On the writer's thread.
        std::function<void(const std::string& id)> picture_written;
        // There is room again, or the client is gone. On the writer's thread.
        std::function<void()> changed;
    };

    // `output` stays the caller's, and open for as long as the process lives.
    Writer(int output, News news, const OutgoingLimits& limits = {});
    // From then on nobody is called. The thread ends when all is written or the client is gone,
    // which may be never. Not to be called by a callback.
    ~Writer();
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    void answer(std::string text);
    void state(std::string text);
    bool picture(std::string text, std::string id);
    void news(std::string text);
    void line(const std::function<std::string(std::uint64_t dropped)>& text);

    bool is_full();
    bool client_is_gone();

    // Until all is written; false when the client took nothing for so long. One that reads slowly
    // gets everything.
    bool flush(std::chrono::nanoseconds patience);

  private:
    class Shared;
    const std::shared_ptr<Shared> shared_;  // with the thread, which may outlive this
};

}  // namespace rpc
