// tether: a tethered shoot with the camera worker, or the terminal connected to it, or a look at
// what both need.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <optional>
#include <signal.h>
#include <string>
#include <system_error>

#include "host/process/beside_this_program.h"
#include "host/process/standard_streams.h"
#include "tether/conversation/events.h"
#include "tether/conversation/interactive.h"
#include "tether/doctor/checks.h"
#include "tether/doctor/examination.h"
#include "tether/ranges.h"
#include "tether/session_options.h"
#include "tether/shoot/shooting.h"

namespace {

namespace fs = std::filesystem;

struct Options {
    tether::Plan plan;
    double shots = 3;
    double every = 0;
    tether::SessionOptions session;
    bool interactive = false;
};

// What the doctor is to look at.
struct Patient {
    std::string bundle = host::bundle_beside_this_program();
    std::optional<std::string> folder;
};

constexpr tether::Range shots_range{"NUMBER", "0123456789", 1, 1'000'000, "1 to 1000000"};
constexpr tether::Range every_range{"SECONDS", "0123456789.", 0, 86'400, "0 to 86400"};

void declare(CLI::App& app, Options& options) {
    app.add_option("--shots", options.shots, "How many shots")
        ->check(tether::in(shots_range))
        ->type_name(tether::type_of(shots_range))
        ->capture_default_str();
    app.add_option("--every", options.every, "Seconds from one shot to the next, at least")
        ->check(tether::in(every_range))
        ->type_name(tether::type_of(every_range));
    app.add_flag("--interactive", options.interactive,
                 "Connect the terminal to the worker instead of shooting");
    tether::declare(app, options.session);
}

CLI::App& declare_doctor(CLI::App& app, Patient& patient) {
    CLI::App& doctor_command =
        *app.add_subcommand("doctor", "Check that a worker has all it needs, and can start");
    doctor_command.add_option("bundle", patient.bundle, "X.app, its Contents, or a build tree")
        ->check(CLI::ExistingPath)
        ->capture_default_str();
    doctor_command.add_option("--folder", patient.folder,
                              "The folder for pictures; shots when it is there");
    return doctor_command;
}

int wrong(const std::string& sentence) {
    std::fprintf(stderr, "tether: %s\n", sentence.c_str());
    return 2;
}

host::SpawnRequest request(const Options& options) {
    host::SpawnRequest request;
    request.executable = options.session.worker;
    if (options.interactive) {
        request.arguments = {options.plan.folder, "-", options.session.save_dest};
    }
    request.environment = tether::environment_of(options.session);
    return request;
}

host::Duration duration(double seconds) {
    return std::chrono::duration_cast<host::Duration>(std::chrono::duration<double>(seconds));
}

int carry_out(int argc, char** argv) {
    Options options;
    Patient patient;
    CLI::App app("A tethered shoot with the camera worker.", "tether");
    declare(app, options);
    const CLI::App& doctor_command = declare_doctor(app, patient);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& asked) {
        return app.exit(asked);
    } catch (const CLI::ParseError& error) {
        return wrong(error.what());
    }
    if (doctor_command.parsed()) {
        std::error_code unreadable;
        if (!patient.folder && fs::is_directory(options.session.folder, unreadable)) {
            patient.folder = options.session.folder;
        }
        return doctor::examine_aloud(patient.bundle, patient.folder);
    }
    if (!fs::exists(options.session.worker)) {
        return wrong("there is no worker at " + options.session.worker);
    }
    std::error_code failure;
    fs::create_directories(options.session.folder, failure);
    options.plan.folder = fs::canonical(options.session.folder, failure);
    if (failure) {
        return wrong("cannot use the folder " + options.session.folder + ": " + failure.message());
    }
    const doctor::Finding folder = doctor::folder_takes_pictures(options.plan.folder);
    if (folder.verdict == doctor::Verdict::failure) {
        return wrong(folder.text);
    }
    if (std::string why;
        !options.interactive && !tether::command_for_folder(options.plan.folder, why)) {
        return wrong(why);
    }
    const auto start = host::Clock::now();
    tether::Record record(start, options.session.redact);
    if (!options.session.record.empty() && !record.open(options.session.record)) {
        return wrong("cannot write " + options.session.record + ": " + record.trouble());
    }
    options.plan.shots = static_cast<unsigned>(options.shots);
    options.plan.every = duration(options.every);
    options.plan.save_dest = options.session.save_dest;
    options.plan.patience = duration(options.session.patience);
    if (!options.session.file_type.empty()) {
        options.plan.file_type = options.session.file_type;
    }

    // A reader of the output that goes away must not cost the pictures.
    signal(SIGPIPE, SIG_IGN);
    tether::post_interrupts();
    tether::Terminal terminal(start);
    return options.interactive
               ? tether::connect_terminal(request(options), terminal, record)
               : tether::carry_out(options.plan, request(options), terminal, record);
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
