// `tether serve`: the camera for a host in any language, by JSON-RPC on standard input and output.
#pragma once

#include <signal.h>
#include <string>
#include <vector>

#include "host/camera.h"

namespace serve {

struct Options {
    host::CameraOptions camera;  // its listener is the server's own
    std::string record;          // a file, or empty
    bool redact = false;
    bool lines = false;  // are told from the beginning, as if they had been subscribed
    int input = 0;       // standard input, or what takes its place
    int output = 1;
    std::vector<int> signals{SIGINT, SIGTERM, SIGHUP};  // that end it in order
};

// The exit status: 0 when everything was ended in order, 2 when the record cannot be written.
int carry_out(Options options);

}  // namespace serve
