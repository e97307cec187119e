#include "simulator/control/socket.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "simulator/camera/shots.h"
#include "simulator/camera/state.h"
#include "simulator/control/scene/language.h"
#include "simulator/control/scene/words.h"
#include "simulator/sdk/delivery.h"
#include "simulator/sdk/strictness.h"
#include "simulator/sdk/threads.h"

namespace camera_sim {
namespace {

struct Listening {
    int stop = -1;  // closing it ends the listening; negative: nobody listens
    std::string path;
    unsigned round =
        0;  // another one after every Release: clients of an earlier one are turned away
};

// Never destroyed: the clients' threads may outlive main.
Listening& g_listening SIM_ANNOTATION(guarded_by(g_lock)) = *new Listening;

bool serving(unsigned round) SIM_REQUIRES(g_lock) {
    return g_listening.stop >= 0 && g_listening.round == round;
}

void wait_until_quiet(Hold& hold, unsigned round) SIM_REQUIRES(g_lock) {
    while (serving(round) && (!all_delivered() || shots_under_way())) {
        hold.wait(g_changed);
    }
}

std::string indented(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += "  " + line + "\n";
    }
    return text;
}

std::string carry_out(const std::string& line, unsigned round, Hold& hold) SIM_REQUIRES(g_lock) {
    Words words(line);
    std::string text;
    if (!serving(round)) {
        words.wrong("the SDK has been released");
    } else if (words.take("wait")) {
        if (words.finished()) {
            wait_until_quiet(hold, round);
        }
    } else if (words.take("state")) {
        text = indented(state_lines());
    } else if (words.take("help")) {
        text = indented(help_lines());
    } else {
        words = Words("");
        words.wrong(run_line(line));
    }
    return words.finished() ? text + "ok\n" : "error: " + words.error() + "\n";
}

// What is left of the text is what a client that does not read leaves no room for, when `how` is
// MSG_DONTWAIT. False: the client is gone.
bool send_text(int client, std::string_view& text, int how) {
#if defined(MSG_NOSIGNAL)
    constexpr int flags = MSG_NOSIGNAL;
#else
    constexpr int flags = 0;  // SO_NOSIGPIPE is set on the socket
#endif
    while (!text.empty()) {
        const ssize_t sent = send(client, text.data(), text.size(), flags | how);
        if (sent < 0 && errno == EINTR) {
            continue;
        }
        if (sent <= 0) {
            return sent < 0 && (errno == EAGAIN || errno == EWOULDBLOCK);
        }
        text.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

// False: the client is gone.
bool answer(int client, const std::string& line, unsigned round) {
    std::string text;
    std::string_view left;
    {
        Hold hold;
        text = carry_out(line, round, hold);
        left = text;
        // What the line has set free may be the end of the process: the answer comes before it.
        if (!send_text(client, left, MSG_DONTWAIT)) {
            return false;
        }
    }
    return send_text(client, left, 0);
}

void serve(int client, unsigned round) {
    std::string received;
    char buffer[4096];
    for (;;) {
        const std::size_t end = received.find('\n');
        if (end != std::string::npos) {
            const std::string line = received.substr(0, end);
            received.erase(0, end + 1);
            if (!answer(client, line, round)) {
                break;
            }
            continue;
        }
        const ssize_t got = recv(client, buffer, sizeof buffer, 0);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            break;
        }
        received.append(buffer, static_cast<std::size_t>(got));
    }
    close(client);
}

// The next client, or negative when the listening is over.
int next_client(int socket, int stopped) {
    pollfd events[] = {{socket, POLLIN, 0}, {stopped, POLLIN, 0}};
    while (poll(events, 2, -1) < 0 && errno == EINTR) {}
    return events[1].revents != 0 ? -1 : accept(socket, nullptr, nullptr);
}

void accept_clients(int socket, int stopped, unsigned round) {
    for (int client; (client = next_client(socket, stopped)) >= 0;) {
        fcntl(client, F_SETFD, FD_CLOEXEC);
#if defined(SO_NOSIGPIPE)
        const int on = 1;
        setsockopt(client, SOL_SOCKET, SO_NOSIGPIPE, &on, sizeof on);
#endif
        start_thread([client, round] { serve(client, round); }).detach();
    }
    close(socket);
    close(stopped);
}

}  // namespace

void listen_for_control(const char* path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (std::strlen(path) >= sizeof address.sun_path) {
        stop(std::string("the path of the control socket is too long: ") + path);
    }
    std::strcpy(address.sun_path, path);
    const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    int ends[2];
    unlink(path);
    if (socket < 0 || pipe(ends) != 0 ||
        bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(socket, 16) != 0) {
        stop(std::string("the control socket ") + path +
             " cannot be made: " + std::strerror(errno));
    }
    for (const int file : {socket, ends[0], ends[1]}) {
        fcntl(file, F_SETFD, FD_CLOEXEC);
    }
    g_listening.stop = ends[1];
    g_listening.path = path;
    const unsigned round = ++g_listening.round;
    start_thread([socket, stopped = ends[0], round] {
        accept_clients(socket, stopped, round);
    }).detach();
}

void stop_control() {
    if (g_listening.stop >= 0) {
        unlink(g_listening.path.c_str());
        close(g_listening.stop);
        g_listening.stop = -1;
    }
}

}  // namespace camera_sim
