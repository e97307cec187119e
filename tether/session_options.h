// What every command that drives a camera can be told: shoot, watch, serve and console.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <utility>
#include <vector>

#include "host/camera.h"
#include "tether/serve/serve.h"

namespace tether {

// The worker when none is named: the one that TETHER_WORKER names, else the one in the bundle's
// place beside this program.
std::string usual_worker();
// The bundle, or the build tree, that has that worker.
std::string usual_bundle();

struct SessionOptions {
    std::string worker = usual_worker();
    std::string folder = "shots";
    std::string save_dest = "disk";
    std::string file_type;  // empty: the camera's own
    std::string name;       // a template; empty: the camera's own names
    double patience = 20;   // seconds
    std::string scene;
    std::string pictures;
    std::string record;  // empty: none
    bool redact = false;
};

void declare(CLI::App& command, SessionOptions& options);

// For the virtual camera, on top of this process's own environment.
std::vector<std::pair<std::string, std::string>> environment_of(const SessionOptions& options);

// All but the listener.
host::CameraOptions camera_options(const SessionOptions& options);

// For the commands that tell a client of a worker that is not there.
serve::Options serve_options(const SessionOptions& options);

// Why no pictures can go there, a sentence; empty when they can. The folder itself is made later,
// and only it: one on a disk that is not mounted is not to be made in the disk's stead.
std::string why_no_folder(const std::string& folder);

}  // namespace tether
