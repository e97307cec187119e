// `tether console`: a page to look at a shoot and to lead it, for browsers on this machine.
#pragma once

#include "tether/serve/serve.h"

namespace console {

struct Options {
    serve::Options serve;
    unsigned int port = 0;  // 0: one that is free
    bool open = false;      // in the user's browser
};

// The exit status: 0 when everything was ended in order, 2 when it could not begin.
int carry_out(Options options);

}  // namespace console
