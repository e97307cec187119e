#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "tests/explore/model/state.h"
#include "tests/explore/trace.h"

namespace explore::model {

// Everything that a right worker may be doing after what has been seen of it.
using Frontier = std::vector<State>;

// Follows what is seen of one worker and tells whether a worker that keeps the protocol can show
// it. Threads may cross, so that after each event several states are possible; the sets of them are
// kept as the nodes of a graph that grows as new events come, because most runs of a scene show
// what others have shown before.
class Model {
  public:
    // The arguments of the worker's command line, without its name.
    explicit Model(const std::vector<const char*>& arguments);

    // The index of the first event that a right worker cannot show; the number of events when all
    // is well.
    std::size_t follow(const std::vector<Event>& events);

    std::size_t nodes() const {
        return nodes_.size();
    }

  private:
    std::uint32_t node_for(Frontier frontier);

    std::vector<Frontier> nodes_;
    std::unordered_map<std::uint64_t, std::uint32_t> known_;  // the hash of a frontier, to its node
    std::unordered_map<std::uint64_t, std::uint32_t> edges_;  // node and event, to the next node

    // What was followed last, and the node after each event: most runs begin as the one before.
    std::vector<Event> followed_;
    std::vector<std::uint32_t> path_;
};

// All states in which a right worker can be after the event.
Frontier after(const Frontier& frontier, const Event& event);

}  // namespace explore::model
