#include "tether/console/console.h"

#include <algorithm>
#include <arpa/inet.h>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <netinet/in.h>
#include <optional>
#include <signal.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <utility>

#include "host/camera/uptime.h"
#include "host/process/exit_watch.h"
#include "host/process/spawn.h"
#include "tether/console/addresses.h"
#include "tether/console/journal.h"
#include "tether/console/page_files.h"
#include "tether/live/signals.h"

namespace console {
namespace {

constexpr const char* journal_variable = "CAMERA_SIM_JOURNAL";

#if defined(__APPLE__)
constexpr const char* opener = "open";
#else
constexpr const char* opener = "xdg-open";
#endif

// For what is being answered.
constexpr std::chrono::seconds to_end{5};

int wrong(const std::string& text) {
    std::fprintf(stderr, "tether: %s\n", text.c_str());
    return 2;
}

// Whoever ends the session waits for them; the threads that are started here must not be hit.
void hold_back_signals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        sigaddset(&signals, number);
    }
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    signal(SIGPIPE, SIG_IGN);
}

struct Listening {
    host::Descriptor socket;
    unsigned int port = 0;
};

// For this machine only. errno says why it is nothing.
std::optional<Listening> listen_on(unsigned int port) {
    Listening listening{host::Descriptor(::socket(AF_INET, SOCK_STREAM, 0))};
    if (!listening.socket.is_open()) {
        return std::nullopt;
    }
    const int number = listening.socket.number();
    fcntl(number, F_SETFD, FD_CLOEXEC);
    host::make_non_blocking(listening.socket);
    // The port of a run that has just ended can be had again.
    const int on = 1;
    setsockopt(number, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (::bind(number, reinterpret_cast<const sockaddr*>(&address), length) != 0 ||
        ::listen(number, SOMAXCONN) != 0 ||
        ::getsockname(number, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
        return std::nullopt;
    }
    listening.port = ntohs(address.sin_port);
    return listening;
}

// The user has the address anyway, should there be no browser.
void open_in_browser(const std::string& address) {
    host::SpawnRequest request;
    request.executable = "/usr/bin/env";
    request.arguments = {opener, address};
    const host::Descriptor nothing(::open("/dev/null", O_RDWR | O_CLOEXEC));
    std::string error;
    if (const auto process = host::spawn(request, nothing, nothing, error)) {
        std::thread([process = *process] {
            host::ExitWatch(process).await(host::TimePoint::max());
        }).detach();
    }
}

}  // namespace

int carry_out(Options options) {
    if (page_files().empty()) {
        std::fputs("tether: this build has no page to show: install npm and build again\n", stderr);
    }
    hold_back_signals();
    auto listening = listen_on(options.port);
    if (!listening) {
        return wrong("cannot listen at port " + std::to_string(options.port) + ": " +
                     std::strerror(errno));
    }
    // Under nohup it goes on when the terminal is closed.
    options.serve.signals = tether::ending_signals();
    const host::Time begun = host::uptime();
    Events events;
    KnownPictures known;
    Session session(events, known);
    Previews previews(preview_program());
    KeptRecord record(options.serve.record);
    auto journal = std::make_unique<Journal>(
        begun, [&events](std::string call) { events.tell_call(std::move(call)); });
    const Access access(listening->port);
    const Limits limits;
    Site site(limits);
    lay_out(site, {access, session, events, previews, record, begun});
    Connections connections(
        std::move(listening->socket), limits,
        {[&access](const Head& head) { return access.refuses(head); },
         [&site](const Exchange& exchange) { return site.serve(exchange); }, Site::headers()});

    options.serve.record = record.path();
    if (!journal->path().empty() && std::getenv(journal_variable) == nullptr) {
        options.serve.camera.environment.emplace_back(journal_variable, journal->path());
    }
    const bool open = options.open;
    std::atomic<int> unseen{0};
    const int status = session.run(std::move(options.serve), [&access, &unseen, open] {
        // Without its address nobody finds the page.
        if (std::printf("%s\n", access.address().c_str()) < 0 || std::fflush(stdout) != 0) {
            unseen = wrong(std::string("cannot write the page's address: ") + std::strerror(errno));
            kill(getpid(), SIGTERM);
        } else if (open) {
            open_in_browser(access.address_for_once());
        }
    });
    journal.reset();
    if (!connections.end(host::after(to_end))) {
        // A disk that does not answer holds somebody who asked for a file of it.
        std::_Exit(std::max(status, unseen.load()));
    }
    return std::max(status, unseen.load());
}

}  // namespace console
