#include "simulator/control/socket.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <poll.h>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>

#include "simulator/camera/shots.h"
#include "simulator/camera/state.h"
#include "simulator/control/scene/language.h"
#include "simulator/control/scene/words.h"
#include "simulator/control/socket_file.h"
#include "simulator/sdk/delivery.h"
#include "simulator/sdk/strictness.h"
#include "simulator/sdk/threads.h"

namespace camera_sim {
namespace {

struct Listening {
    int stop = -1;  // closing it ends the listening; negative: nobody listens
    SocketFile file;
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
    const bool too_long = line.size() > longest_line;
    Words words(too_long ? "" : line);
    std::string text;
    if (!serving(round)) {
        words.wrong("the SDK has been released");
    } else if (too_long) {
        words.wrong("a line has at most " + std::to_string(longest_line) + " bytes");
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

// With MSG_DONTWAIT it stops when the client has no room for more; the rest stays in `text`. False:
// the client is gone.
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

// Cuts what a client sends into lines. Of one that is too long only so much is kept as shows that.
class Lines {
  public:
    void add(std::string_view bytes) {
        received_.append(bytes);
        const std::size_t begin = received_.rfind('\n') + 1;  // 0 without a line's end
        if (received_.size() - begin > longest_line + 1) {
            received_.resize(begin + longest_line + 1);
        }
    }
    std::optional<std::string> next() {
        const std::size_t end = received_.find('\n');
        if (end == std::string::npos) {
            return std::nullopt;
        }
        std::string line = received_.substr(0, end);
        received_.erase(0, end + 1);
        return line;
    }

  private:
    std::string received_;
};

void serve(int client, unsigned round) {
    Lines lines;
    char buffer[4096];
    for (;;) {
        if (const auto line = lines.next()) {
            if (!answer(client, *line, round)) {
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
        lines.add({buffer, static_cast<std::size_t>(got)});
    }
    close(client);
}

void turn_away_for_now(int client) {
    constexpr std::string_view answer = "error: the camera has no room for another client\n";
    std::string_view left = answer;
    send_text(client, left, MSG_DONTWAIT);
    close(client);
}

void welcome(int client, unsigned round) {
    fcntl(client, F_SETFD, FD_CLOEXEC);
    fcntl(client, F_SETFL, fcntl(client, F_GETFL) & ~O_NONBLOCK);  // some systems pass it on
#if defined(SO_NOSIGPIPE)
    const int on = 1;
    setsockopt(client, SOL_SOCKET, SO_NOSIGPIPE, &on, sizeof on);
#endif
    try {
        start_thread([client, round] { serve(client, round); }).detach();
    } catch (const std::system_error&) {
        turn_away_for_now(client);  // as many threads as the system allows
    }
}

void accept_clients(int socket, int stopped, unsigned round) {
    // Out of descriptors or memory for now: clients wait in the queue meanwhile. Nothing tells when
    // there are some again.
    constexpr int pause_ms = 50;
    bool pausing = false;
    for (;;) {
        pollfd events[] = {{stopped, POLLIN, 0}, {socket, POLLIN, 0}};
        poll(events, pausing ? 1 : 2, pausing ? pause_ms : -1);
        if (events[0].revents != 0) {
            break;
        }
        const int client = accept(socket, nullptr, nullptr);
        pausing = client < 0 &&
                  (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM);
        if (client >= 0) {
            welcome(client, round);
        }
    }
    close(socket);
    close(stopped);
}

}  // namespace

void listen_for_control(const char* path) {
    const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    int ends[2];
    if (socket < 0 || pipe(ends) != 0) {
        stop(std::string("the control socket ") + path +
             " cannot be made: " + std::strerror(errno));
    }
    for (const int file : {socket, ends[0], ends[1]}) {
        fcntl(file, F_SETFD, FD_CLOEXEC);
    }
    // A client may go between being announced and being accepted.
    fcntl(socket, F_SETFL, O_NONBLOCK);
    if (const std::string why_not = g_listening.file.bind_and_listen(socket, path);
        !why_not.empty()) {
        stop(std::string("CAMERA_SIM_CONTROL: ") + path + " " + why_not);
    }
    g_listening.stop = ends[1];
    const unsigned round = ++g_listening.round;
    start_thread([socket, stopped = ends[0], round] {
        accept_clients(socket, stopped, round);
    }).detach();
}

void stop_control() {
    if (g_listening.stop >= 0) {
        // While it still listens: nobody takes it for one that is left behind.
        g_listening.file.remove();
        close(g_listening.stop);
        g_listening.stop = -1;
    }
}

}  // namespace camera_sim
