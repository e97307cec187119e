#include "tether/shoot/shooting.h"

#include <algorithm>

#include "tether/conversation/events.h"
#include "tether/shoot/summary.h"

namespace tether {

using host::Clock;

namespace {

constexpr std::chrono::seconds time_for_the_rest{2};

void handle(const Event& event, Shoot& shoot, Conversation& conversation) {
    switch (event.kind) {
        case Event::Kind::worker_line:
            conversation.heard(event.text, event.at);
            shoot.hear(event.text, event.at);
            break;
        case Event::Kind::worker_ended:
            shoot.stop("the worker went away");
            break;
        case Event::Kind::interrupted:
            conversation.interrupted(event.at);
            shoot.stop("interrupted");
            break;
        case Event::Kind::typed:
        case Event::Kind::typing_ended:
            break;
    }
}

// What the worker said while it was being ended: pictures may be among it.
void hear_the_rest(Shoot& shoot, Conversation& conversation) {
    const auto deadline = host::after(time_for_the_rest);
    while (const auto event = events().next(deadline)) {
        if (event->kind == Event::Kind::worker_ended) {
            return;
        }
        if (event->kind == Event::Kind::worker_line) {
            handle(*event, shoot, conversation);
        }
    }
    // A process that the worker has left behind holds its output open.
    conversation.close_output();
    while (events().next(host::TimePoint::max())->kind != Event::Kind::worker_ended) {}
}

}  // namespace

int carry_out(const Plan& plan, const host::SpawnRequest& worker, Terminal& terminal,
              Record& record) {
    Conversation conversation(terminal, record);
    std::string error;
    if (!conversation.start(worker, error)) {
        terminal.show_text("tether: " + error + "\n");
        return 1;
    }
    Shoot shoot(plan, [&](const std::string& line) { conversation.say(line); });
    shoot.begin(Clock::now());
    bool worker_ended = false;
    while (!shoot.over()) {
        const auto now = Clock::now();
        terminal.show_progress(shoot.progress(), now);
        if (now >= shoot.deadline()) {
            shoot.pass(now);
            continue;
        }
        if (const auto event =
                events().next(std::min(shoot.deadline(), terminal.next_redraw(now)))) {
            worker_ended = event->kind == Event::Kind::worker_ended;
            handle(*event, shoot, conversation);
        }
    }
    terminal.show_progress({}, Clock::now());
    conversation.end();
    if (!worker_ended) {
        hear_the_rest(shoot, conversation);
    }
    shoot.conclude();
    for (const std::string& trouble : conversation.conclude()) {
        shoot.stop(trouble);
    }
    terminal.show_text(summary(shoot.report(), plan.folder));
    return shoot.report().troubles.empty() ? 0 : 1;
}

}  // namespace tether
