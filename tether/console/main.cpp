// tether-console: what `tether console` is, started by tether with its own command line.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <string>

#include "host/process/standard_streams.h"
#include "tether/console/console.h"
#include "tether/console_options.h"

namespace {

int wrong(const std::string& sentence) {
    std::fprintf(stderr, "tether: %s\n", sentence.c_str());
    return 2;
}

int carry_out(int argc, char** argv) {
    tether::ConsoleOptions options;
    CLI::App app("The page of a tethered shoot.", "tether");
    tether::declare(app, options);
    app.require_subcommand(1);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& asked) {
        return app.exit(asked);
    } catch (const CLI::ParseError& error) {
        return wrong(error.what());
    }
    if (const std::string why = tether::why_no_folder(options.session.folder); !why.empty()) {
        return wrong(why);
    }
    return console::carry_out({tether::serve_options(options.session),
                               static_cast<unsigned int>(options.port), options.open});
}

}  // namespace

int main(int argc, char** argv) {
    host::open_closed_standard_streams();
    try {
        return carry_out(argc, argv);
    } catch (const std::exception& error) {
        return wrong(error.what());
    }
}
