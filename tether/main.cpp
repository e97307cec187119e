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
#include "tether/shoot/shooting.h"

namespace {

namespace fs = std::filesystem;

struct Options {
    tether::Plan plan;
    double shots = 3;
    double every = 0;
    double patience = 20;
    std::string folder = "shots";
    std::string file_type;
    std::string worker = host::worker_beside_this_program();
    std::string scene;
    std::string pictures;
    std::string record;
    bool redact = false;
    bool interactive = false;
};

// What the doctor is to look at.
struct Patient {
    std::string bundle = host::bundle_beside_this_program();
    std::optional<std::string> folder;
};

// What a number may be. The largest ones are far beyond any use, and far below what a clock holds.
struct Range {
    const char* kind;
    const char* digits;  // the characters that it is written with
    double least;
    double most;
    const char* words;
};

constexpr Range shots_range{"NUMBER", "0123456789", 1, 1'000'000, "1 to 1000000"};
constexpr Range every_range{"SECONDS", "0123456789.", 0, 86'400, "0 to 86400"};
constexpr Range patience_range{"SECONDS", "0123456789.", 0.1, 3'600, "0.1 to 3600"};

// CLI11 itself takes "nan", "inf" and "0x10", and "010" for 8.
CLI::Validator in(const Range& range) {
    return CLI::Validator(
        [&range](std::string& text) {
            char* end = nullptr;
            const double value = std::strtod(text.c_str(), &end);
            const bool good = text.find_first_not_of(range.digits) == std::string::npos &&
                              end != text.c_str() && *end == '\0' && value >= range.least &&
                              value <= range.most;
            return good ? std::string()
                        : std::string("needs a number from ") + range.words + ", not " + text;
        },
        "");
}

std::string type_of(const Range& range) {
    return std::string(range.kind) + " from " + range.words;
}

void declare(CLI::App& app, Options& options) {
    app.add_option("--shots", options.shots, "How many shots")
        ->check(in(shots_range))
        ->type_name(type_of(shots_range))
        ->capture_default_str();
    app.add_option("--every", options.every, "Seconds from one shot to the next, at least")
        ->check(in(every_range))
        ->type_name(type_of(every_range));
    app.add_option("--patience", options.patience, "Seconds to wait for the pictures of a shot")
        ->check(in(patience_range))
        ->type_name(type_of(patience_range))
        ->capture_default_str();
    app.add_option("--folder", options.folder, "Where the pictures go")->capture_default_str();
    app.add_option("--file-type", options.file_type, "What the camera makes of a shot")
        ->check(CLI::IsMember({"jpeg", "raw", "both"}));
    app.add_option("--save-dest", options.plan.save_dest, "Where the camera puts its shots")
        ->check(CLI::IsMember({"disk", "card", "both"}))
        ->capture_default_str();
    app.add_option("--worker", options.worker, "The camera worker")->check(CLI::ExistingFile);
    app.add_option("--scene", options.scene, "A scene for the virtual camera")
        ->check(CLI::ExistingFile);
    app.add_option("--pictures", options.pictures, "Pictures for the virtual camera to take")
        ->check(CLI::ExistingDirectory);
    app.add_flag("--interactive", options.interactive,
                 "Connect the terminal to the worker instead of shooting");
    CLI::Option* record =
        app.add_option("--record", options.record,
                       "Write every line with its time to a new file; one with something in it is "
                       "refused");
    app.add_flag("--redact", options.redact, "Keep paths and names out of the record")
        ->needs(record);
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
    request.executable = options.worker;
    if (options.interactive) {
        request.arguments = {options.plan.folder, "-", options.plan.save_dest};
    }
    if (!options.scene.empty()) {
        request.environment.emplace_back("CAMERA_SIM_SCENE", fs::absolute(options.scene));
    }
    if (!options.pictures.empty()) {
        request.environment.emplace_back("CAMERA_SIM_PICTURES", fs::absolute(options.pictures));
    }
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
        if (!patient.folder && fs::is_directory(options.folder, unreadable)) {
            patient.folder = options.folder;
        }
        return doctor::examine_aloud(patient.bundle, patient.folder);
    }
    if (!fs::exists(options.worker)) {
        return wrong("there is no worker at " + options.worker);
    }
    std::error_code failure;
    fs::create_directories(options.folder, failure);
    options.plan.folder = fs::canonical(options.folder, failure);
    if (failure) {
        return wrong("cannot use the folder " + options.folder + ": " + failure.message());
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
    tether::Record record(start, options.redact);
    if (!options.record.empty() && !record.open(options.record)) {
        return wrong("cannot write " + options.record + ": " + record.trouble());
    }
    options.plan.shots = static_cast<unsigned>(options.shots);
    options.plan.every = duration(options.every);
    options.plan.patience = duration(options.patience);
    if (!options.file_type.empty()) {
        options.plan.file_type = options.file_type;
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
