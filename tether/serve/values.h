// The values of the host's side as they stand on the wire.
#pragma once

#include <cstdint>

#include "host/camera.h"
#include "tether/rpc/errors.h"
#include "tether/rpc/json.h"

namespace serve {

rpc::Json json(const host::Problem& problem);
rpc::Json json(const host::Picture& picture);
rpc::Json json(const host::Shot& shot);
rpc::Json json(const host::SessionState& state);
rpc::Json json(const host::Ended& ended);

// A line of the wire; lines of standard error are none.
rpc::Json json(const host::WireLine& line, std::uint64_t dropped);

// A request that failed with a problem.
rpc::Error error(const host::Problem& problem);

}  // namespace serve
