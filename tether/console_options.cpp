#include "tether/console_options.h"

#include "tether/ranges.h"

namespace tether {
namespace {

constexpr Range port_range{"PORT", "0123456789", 1, 65'535, "1 to 65535"};

}  // namespace

CLI::App& declare(CLI::App& app, ConsoleOptions& options) {
    CLI::App& command = *app.add_subcommand(
        "console", "Show the shoot on a page in a browser of this machine, and lead it from there");
    declare(command, options.session);
    command
        .add_option("--port", options.port,
                    "Where the page is served; a free one when none is given")
        ->check(in(port_range))
        ->type_name(type_of(port_range));
    command.add_flag("--open", options.open, "Open the page in the browser");
    command.footer("tether console --open --folder shots");
    return command;
}

}  // namespace tether
