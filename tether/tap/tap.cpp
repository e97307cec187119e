#include "tether/tap/tap.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <initializer_list>
#include <signal.h>
#include <unistd.h>

#include "host/process/fields.h"
#include "host/process/spawn.h"
#include "tether/tap/observer.h"
#include "tether/tap/passing.h"

namespace tap {

using host::Clock;
using host::Descriptor;
using host::Pipe;

namespace {

constexpr int status_of_a_complaint = 3;
constexpr int first_beside_standard_streams = 3;
// Of those that a process inherits, the numbers are low.
constexpr int highest_inherited = 255;
// A disk that is stuck must not keep the host from its worker's status.
constexpr std::chrono::seconds time_for_the_record{5};
// Of the pipes between tap and worker, so that the tap adds little to what a host may leave
// unread before the worker stands still.
constexpr int pipe_bytes = 4096;

std::string name_by_time() {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    gmtime_r(&now, &parts);
    char date[32];
    std::strftime(date, sizeof date, "%Y%m%d-%H%M%S", &parts);
    return "tether-tap-" + std::string(date) + "-" + std::to_string(getpid()) + ".record";
}

// What is open in this process is the tap's to close, or the worker's to hold: a lock, the host's
// ends of pipes.
void close_all_but(std::initializer_list<int> kept) {
    const int null = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    dup2(null, STDIN_FILENO);
    dup2(null, STDOUT_FILENO);
    for (int number = first_beside_standard_streams; number <= highest_inherited; ++number) {
        bool is_kept = false;
        for (const int one : kept) {
            is_kept = is_kept || one == number;
        }
        if (!is_kept) {
            ::close(number);
        }
    }
}

// The observer's process.
[[noreturn]] void observe(tether::Record& record, Observer& observer, const Descriptor& notices,
                          const Descriptor& verdict) {
    for (const int number :
         {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGUSR1, SIGUSR2, SIGALRM, SIGPIPE}) {
        signal(number, SIG_IGN);
    }
    close_all_but({notices.number(), verdict.number(), record.descriptor()});
    observer.observe(notices);
    const char answer = static_cast<char>(observer.report());
    [[maybe_unused]] const ssize_t ignored = ::write(verdict.number(), &answer, 1);
    std::_Exit(0);
}

void shrink([[maybe_unused]] const Descriptor& pipe) {
#if defined(F_SETPIPE_SZ)
    fcntl(pipe.number(), F_SETPIPE_SZ, pipe_bytes);
#endif
}

// Nothing and why when the worker cannot be started; otherwise its status.
std::optional<int> run_worker(const Options& options, int lock, NoticeWriter& notices,
                              std::string& why) {
    std::optional<Pipe> input = host::make_pipe();
    std::optional<Pipe> output = host::make_pipe();
    if (!input || !output) {
        why = std::string("cannot make a pipe: ") + std::strerror(errno);
        return std::nullopt;
    }
    shrink(input->write_end);
    shrink(output->write_end);
    const Signals signals;
    host::SpawnRequest request;
    request.executable = options.worker.front();
    request.arguments.assign(options.worker.begin() + 1, options.worker.end());
    request.inherited_descriptor = lock;
    const auto worker = host::spawn(request, input->read_end, output->write_end, why);
    if (!worker) {
        return std::nullopt;
    }
    ::close(lock);
    input->read_end.close();
    output->write_end.close();
    host::make_non_blocking(output->read_end);
    notices.tell(Kind::started, Clock::now(), *worker);
    Passing passing(*worker, std::move(input->write_end), std::move(output->read_end), signals,
                    notices);
    return passing.pass();
}

// What the observer makes of it all. One that takes no notices, or comes to no end, hangs on its
// disk: it is ended, and nothing is known.
std::optional<Verdict> wait_for_verdict(NoticeWriter& notices, const Descriptor& verdict,
                                        pid_t observer) {
    char answer = 0;
    if (notices.finish(time_for_the_record)) {
        pollfd wanted{verdict.number(), POLLIN, 0};
        poll(&wanted, 1, host::poll_timeout(host::after(time_for_the_record)));
        if (wanted.revents != 0 && ::read(verdict.number(), &answer, 1) == 1) {
            return static_cast<Verdict>(answer);
        }
    }
    kill(observer, SIGKILL);
    std::fputs("tether tap: the record is not complete\n", stderr);
    return std::nullopt;
}

}  // namespace

std::string carry_out(const Options& options) {
    const auto start = Clock::now();
    // What a host lets its worker hold, such as a lock. Looked for before anything is opened here.
    const bool has_lock = fcntl(first_beside_standard_streams, F_GETFD) == 0;
    if (!std::filesystem::exists(options.worker.front())) {
        return "there is no worker at " + options.worker.front();
    }
    tether::Record record(start, options.redact);
    std::string name = options.record.empty() ? name_by_time() : options.record;
    if (!record.open(name)) {
        std::string sentence = "cannot write " + name + ": " + record.trouble();
        if (!options.record.empty()) {
            return sentence;
        }
        // A host in a folder that takes no files still gets its worker.
        std::fprintf(stderr, "tether tap: %s; no record is kept\n", sentence.c_str());
        name.clear();
    }
    std::optional<Pipe> notice_pipe = host::make_pipe();
    std::optional<Pipe> verdict_pipe = host::make_pipe();
    if (!notice_pipe || !verdict_pipe) {
        return std::string("cannot make a pipe: ") + std::strerror(errno);
    }
    const pid_t observing = fork();
    if (observing == 0) {
        Observer observer(record, name, start,
                          options.worker.size() > 1 ? host::escape_field(options.worker[1]) : "");
        observe(record, observer, notice_pipe->read_end, verdict_pipe->write_end);
    }
    if (observing < 0) {
        return std::string("cannot start a process: ") + std::strerror(errno);
    }
    notice_pipe->read_end.close();
    verdict_pipe->write_end.close();
    NoticeWriter notices(std::move(notice_pipe->write_end));
    std::string why;
    const auto status =
        run_worker(options, has_lock ? first_beside_standard_streams : -1, notices, why);
    if (!status) {
        kill(observing, SIGKILL);
        return why;
    }
    notices.tell(Kind::ended, Clock::now(), *status);
    const auto verdict = wait_for_verdict(notices, verdict_pipe->read_end, observing);
    if (options.strict && verdict == Verdict::complaints) {
        std::_Exit(status_of_a_complaint);
    }
    end_like(*status);
}

}  // namespace tap
