#include "tether/conversation/interactive.h"

#include <unistd.h>

#include "tether/conversation/events.h"

namespace tether {

int connect_terminal(const host::SpawnRequest& worker, Terminal& terminal, Record& record) {
    Conversation conversation(terminal, record);
    std::string error;
    if (!conversation.start(worker, error)) {
        terminal.show_text("tether: " + error + "\n");
        return 1;
    }
    const bool shown_where_typed = isatty(STDIN_FILENO) == 1 && isatty(STDOUT_FILENO) == 1;
    post_typed_lines();
    // Everything that the worker says is shown, also while it ends.
    while (const auto event = events().next(host::TimePoint::max())) {
        switch (event->kind) {
            case Event::Kind::worker_line:
                conversation.heard(event->text, event->at);
                break;
            case Event::Kind::typed:
                conversation.pass_on(event->text, shown_where_typed);
                break;
            case Event::Kind::typing_ended:
                conversation.close_input();
                break;
            case Event::Kind::interrupted:
                conversation.interrupted(event->at);
                conversation.end();
                break;
            case Event::Kind::worker_ended: {
                const auto troubles = conversation.conclude();
                for (const std::string& trouble : troubles) {
                    terminal.show_text("tether: " + trouble + "\n");
                }
                return troubles.empty() ? 0 : 1;
            }
        }
    }
    return 1;
}

}  // namespace tether
