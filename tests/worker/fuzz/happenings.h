// What can happen in a run of the worker on the virtual camera: at the camera, and from the host.
#pragma once

#include <string>

#include "tests/worker/fuzz/bytes.h"

// A line for the scene. The camera may not be able to do it now.
std::string scene_line(Bytes& bytes);

// Mostly a command, sometimes any bytes; a folder that is named is this one.
std::string host_bytes(Bytes& bytes, const std::string& named_folder);
