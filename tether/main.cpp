// tether: a tethered shoot with the camera worker, a watch that stays with a camera, the terminal
// connected to a worker, or a look at what all of them need.
#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <optional>
#include <signal.h>
#include <string>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

#include "host/process/beside_this_program.h"
#include "host/process/standard_streams.h"
#include "tether/author_commands.h"
#include "tether/console_options.h"
#include "tether/conversation/events.h"
#include "tether/conversation/interactive.h"
#include "tether/doctor/checks.h"
#include "tether/doctor/examination.h"
#include "tether/help.h"
#include "tether/ranges.h"
#include "tether/serve/serve.h"
#include "tether/session_options.h"
#include "tether/shoot/shoot.h"
#include "tether/watch/watch.h"

namespace {

namespace fs = std::filesystem;

struct ShootOptions {
    double shots = 3;
    double every = 0;
    double wait = 60;
    tether::SessionOptions session;
    bool interactive = false;
};

struct WatchOptions {
    tether::SessionOptions session;
    std::vector<std::string> program;  // and its fixed arguments
};

// What the doctor is to look at.
struct Patient {
    std::string bundle = tether::usual_bundle();
    std::optional<std::string> folder;
};

constexpr tether::Range shots_range{"NUMBER", "0123456789", 1, 1'000'000, "1 to 1000000"};
constexpr tether::Range every_range{"SECONDS", "0123456789.", 0, 86'400, "0 to 86400"};
constexpr tether::Range wait_range{"SECONDS", "0123456789.", 1, 86'400, "1 to 86400"};

void declare(CLI::App& app, ShootOptions& options) {
    app.add_option("--shots", options.shots, "How many shots")
        ->check(tether::in(shots_range))
        ->type_name(tether::type_of(shots_range))
        ->capture_default_str();
    app.add_option("--every", options.every, "Seconds from one shot to the next, at least")
        ->check(tether::in(every_range))
        ->type_name(tether::type_of(every_range));
    app.add_option("--wait", options.wait, "Seconds to wait for the camera, each time it is away")
        ->check(tether::in(wait_range))
        ->type_name(tether::type_of(wait_range))
        ->capture_default_str();
    tether::declare(app, options.session);
}

CLI::App& declare_watch(CLI::App& app, WatchOptions& options) {
    CLI::App& command = *app.add_subcommand(
        "watch", "Stay, and bring in every picture, also those of the button on the camera");
    tether::declare(command, options.session);
    command
        .add_option("--exec", options.program,
                    "A program to run for each picture, with the path as its last argument; once "
                    "more for each argument before it")
        ->type_name("PROGRAM")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    command.footer("tether watch --exec open --folder shots");
    return command;
}

CLI::App& declare_doctor(CLI::App& app, Patient& patient) {
    CLI::App& doctor_command =
        *app.add_subcommand("doctor", "Check that a worker has all it needs, and can start");
    doctor_command.add_option("bundle", patient.bundle, "X.app, its Contents, or a build tree")
        ->check(CLI::ExistingPath.description(""))
        ->type_name("PATH")
        ->capture_default_str();
    doctor_command
        .add_option("--folder", patient.folder, "The folder for pictures; shots when it is there")
        ->type_name("FOLDER");
    doctor_command.footer("tether doctor /Applications/Booth.app");
    return doctor_command;
}

CLI::App& declare_serve(CLI::App& app, tether::SessionOptions& session) {
    CLI::App& serve_command = *app.add_subcommand(
        "serve", "Serve the camera to a host by JSON-RPC on standard input and output");
    tether::declare(serve_command, session);
    // One that is not there is a problem that the client is told.
    serve_command.remove_option(serve_command.get_option("--worker"));
    serve_command.add_option("--worker", session.worker, "The camera worker")->type_name("FILE");
    serve_command.footer("tether serve --folder shots --record a.record");
    return serve_command;
}

int wrong(const std::string& sentence) {
    std::fprintf(stderr, "tether: %s\n", sentence.c_str());
    return 2;
}

host::Duration duration(double seconds) {
    return std::chrono::duration_cast<host::Duration>(std::chrono::duration<double>(seconds));
}

int connect_terminal(const tether::SessionOptions& session, tether::Terminal& terminal,
                     tether::Record& record) {
    tether::post_interrupts();
    host::SpawnRequest request;
    request.executable = session.worker;
    request.arguments = {fs::canonical(session.folder), "-", session.save_dest};
    request.environment = tether::environment_of(session);
    return tether::connect_terminal(request, terminal, record);
}

// What every command on a camera needs before it begins; 0 when all is there.
int prepare(const tether::SessionOptions& session, tether::Record& record) {
    if (!fs::exists(session.worker)) {
        return wrong("there is no worker at " + session.worker);
    }
    if (const std::string why = tether::why_no_folder(session.folder); !why.empty()) {
        return wrong(why);
    }
    if (!session.record.empty() && !record.open(session.record)) {
        return wrong("cannot write " + session.record + ": " + record.trouble());
    }
    // A reader of the output that goes away must not cost the pictures.
    signal(SIGPIPE, SIG_IGN);
    return 0;
}

int shoot(const ShootOptions& options) {
    const auto start = host::Clock::now();
    tether::Record record(start, options.session.redact);
    if (const int status = prepare(options.session, record)) {
        return status;
    }
    tether::Terminal terminal(start);
    if (options.interactive) {
        fs::create_directory(options.session.folder);
        return connect_terminal(options.session, terminal, record);
    }
    const tether::Plan plan{static_cast<unsigned>(options.shots), duration(options.every),
                            duration(options.wait)};
    return tether::shoot(plan, tether::camera_options(options.session), terminal, record);
}

int watch(WatchOptions options) {
    const auto start = host::Clock::now();
    tether::Record record(start, options.session.redact);
    if (!options.program.empty()) {
        std::string why;
        const auto program = tether::find_program(options.program.front(), why);
        if (!program) {
            return wrong(why);
        }
        options.program.front() = *program;
    }
    if (const int status = prepare(options.session, record)) {
        return status;
    }
    tether::Terminal terminal(start);
    return tether::watch(tether::camera_options(options.session), options.program, terminal,
                         record);
}

// A program of its own: the libraries that it needs would be loaded at the start of every command.
// It reads the same command line once more.
int show_page(char** argv) {
    const fs::path program = host::folder_of_this_program() / "tether-console";
    ::execv(program.c_str(), argv);
    const int why = errno;
    return wrong(why == ENOENT
                     ? "this tether has no page: ./run console in its repository builds one"
                     : "cannot start " + program.string() + ": " +
                           std::generic_category().message(why));
}

// An option that was meant for the command behind it would count for nothing: pictures would go
// into another folder than the one that was named. Empty when there is none.
std::string misplaced_option(const CLI::App& app) {
    const auto commands = app.get_subcommands();
    if (commands.empty() || commands.front()->get_name() == "shoot") {
        return "";
    }
    for (const CLI::Option* option : app.get_options()) {
        if (option->count() > 0) {
            return option->get_name() + " stands before \"" + commands.front()->get_name() +
                   "\": write it behind";
        }
    }
    return "";
}

int carry_out(int argc, char** argv) {
    tether::drop_separator(argc, argv);
    ShootOptions options;
    WatchOptions watching;
    Patient patient;
    CLI::App app("A tethered shoot with the camera worker.", "tether");
    tether::show_help_in_80_columns(app);
    app.set_version_flag("--version", "tether " TETHER_VERSION);
    app.footer("./run --shots 5 --folder shots");
    declare(app, options);
    app.add_flag("--interactive", options.interactive,
                 "Connect the terminal to the worker instead of shooting");
    CLI::App& shoot_command =
        *app.add_subcommand("shoot", "Take so many pictures: what is done without a command too");
    declare(shoot_command, options);
    shoot_command.footer("tether shoot --shots 5 --file-type both");
    const CLI::App& watch_command = declare_watch(app, watching);
    const CLI::App& doctor_command = declare_doctor(app, patient);
    tether::SessionOptions serving;
    const CLI::App& serve_command = declare_serve(app, serving);
    tether::AuthorCommands author_commands(app);
    tether::ConsoleOptions showing;
    const CLI::App& console_command = tether::declare(app, showing);
    app.require_subcommand(0, 1);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& asked) {
        return app.exit(asked);
    } catch (const CLI::ParseError& error) {
        return wrong(tether::what_is_wrong(app, error));
    }
    if (const std::string sentence = misplaced_option(app); !sentence.empty()) {
        return wrong(sentence);
    }
    if (doctor_command.parsed()) {
        std::error_code unreadable;
        if (!patient.folder && fs::is_directory(options.session.folder, unreadable)) {
            patient.folder = options.session.folder;
        }
        return doctor::examine_aloud(patient.bundle, patient.folder);
    }
    if (serve_command.parsed()) {
        return serve::carry_out(tether::serve_options(serving));
    }
    if (console_command.parsed()) {
        return show_page(argv);
    }
    if (const auto status = author_commands.carry_out()) {
        return *status;
    }
    return watch_command.parsed() ? watch(watching) : shoot(options);
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
