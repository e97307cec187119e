#include "tests/worker/processes/live_worker.h"

#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <map>
#include <sys/stat.h>
#include <unistd.h>

#include "host/process/beside_this_program.h"
#include "tests/worker/processes/pace.h"

namespace {

namespace fs = std::filesystem;

// A test may write a million commands before it reads the first answer.
constexpr host::OutputLimits limits{1 << 20, 256 << 20};

// The journal is a named pipe, so that a call can be waited for. Opened for writing too, so that it
// has no end.
std::unique_ptr<host::LineStream> listen_to(const fs::path& journal) {
    mkfifo(journal.c_str(), 0600);
    host::Descriptor pipe(open(journal.c_str(), O_RDWR | O_CLOEXEC));
    return std::make_unique<host::LineStream>(std::move(pipe), *host::make_pipe(), limits);
}

std::vector<std::pair<std::string, std::string>> environment(const Plan& plan,
                                                             const CameraFolder& folder) {
    const auto usual = folder.environment();
    std::map<std::string, std::string> variables(usual.begin(), usual.end());
    // ThreadSanitizer would let every exit take a second.
    variables["TSAN_OPTIONS"] = "atexit_sleep_ms=0";
    for (const auto& [name, value] : plan.environment) {
        variables[name] = value;
    }
    return {variables.begin(), variables.end()};
}

// The field of a journal's line that holds the call.
std::string call_in(const std::string& line) {
    std::size_t start = 0;
    for (int field = 0; field < 3; ++field) {
        start = line.find('\t', start) + 1;
    }
    return line.substr(start, line.find('\t', start) - start);
}

}  // namespace

LiveWorker::LiveWorker(const Plan& plan) : journal_(listen_to(folder_.path() / "journal")) {
    folder_.write_scene(plan.scene);
    const fs::path worker = plan.worker.empty() ? host::worker_beside_this_program() : plan.worker;
    host::SpawnRequest request{worker, plan.arguments, environment(plan, folder_),
                               folder_.path() / "stderr"};
    if (!plan.shell.empty()) {
        request.arguments.insert(request.arguments.begin(), {"-c", plan.shell, "sh", worker});
        request.executable = "/bin/sh";
    }
    std::string error;
    process_ = host::WorkerProcess::start(request, error, limits);
    if (!process_) {
        ADD_FAILURE() << error;
        std::abort();
    }
}

LiveWorker::~LiveWorker() {
    process_.reset();
    if (!complaints_taken_) {
        EXPECT_EQ(take_complaints(), "");
    }
}

std::string LiveWorker::next() {
    if (const auto line = process_->next_line(host::after(patience))) {
        return line->whole ? line->text : line->text + " (unfinished)";
    }
    return process_->output_ended() ? "(end of output)" : "(nothing)";
}

bool LiveWorker::await_line(const std::string& line) {
    std::string came;
    do {
        came = next();
    } while (came != line && came.front() != '(');
    EXPECT_EQ(came, line);
    return came == line;
}

void LiveWorker::expect_opening() {
    EXPECT_EQ(next(), "CPP_WORKER|START sony-1.0");
    EXPECT_EQ(next().rfind("LOG|[SONY] USB transport adapters found: ", 0), 0U);
    EXPECT_EQ(next(), "LOG|[SONY] Camera Remote SDK 1.0.0");
    EXPECT_EQ(next(), "READY|OK");
}

void LiveWorker::bring_session_up() {
    process_->send("CONNECT");
    await_line("CONNECTED|Virtual Camera SIM-1");
    process_->send("PRIME");
    await_line("PRIME_DONE|OK");
}

bool LiveWorker::await_call(const std::string& call) {
    while (const auto line = journal_->next(host::after(patience))) {
        if (call_in(line->text) == call) {
            return true;
        }
    }
    ADD_FAILURE() << "no call of " << call;
    return false;
}

void LiveWorker::tell_camera(const std::string& line) {
    EXPECT_EQ(folder_.tell(line), "");
}

host::Exit LiveWorker::exit() {
    const auto exit = process_->await_exit(host::after(patience));
    if (!exit) {
        ADD_FAILURE() << "the worker does not end";
        process_->signal(SIGKILL);
    }
    return *process_->await_exit(host::TimePoint::max());
}

void LiveWorker::expect_end(const std::function<void()>& action, host::Duration least,
                            host::Duration most) {
    const auto start = host::Clock::now();
    action();
    const host::Exit exit = this->exit();
    EXPECT_EQ(describe(exit), "status 0");
    EXPECT_GE((exit.at - start) / std::chrono::milliseconds(1),
              least / std::chrono::milliseconds(1));
    EXPECT_LE((exit.at - start) / std::chrono::milliseconds(1),
              most / std::chrono::milliseconds(1));
    EXPECT_EQ(next(), "(end of output)");
}

void LiveWorker::expect_prompt_end(const std::function<void()>& action) {
    expect_end(action, host::Duration::zero(), prompt);
}

std::string LiveWorker::take_complaints() {
    complaints_taken_ = true;
    return folder_.complaints();
}
