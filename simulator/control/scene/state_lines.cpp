// What the control line `state` prints.

#include "simulator/camera/state.h"
#include "simulator/control/scene/language.h"
#include "simulator/sdk/text.h"

namespace camera_sim {

std::vector<std::string> state_lines() {
    const State& now = state();
    std::vector<std::string> lines;
    lines.push_back(std::string("session ") + to_text(now.session.stage));
    lines.push_back("handle " + std::to_string(now.session.handle));
    for (const Body& body : now.bodies) {
        if (body.missing) {
            lines.push_back("camera missing");
            continue;
        }
        lines.push_back("camera " + body.describe() + ", card " + to_text(body.card) + ", " +
                        std::to_string(body.on_card) + " shots on it, " +
                        std::to_string(body.kept) + " kept, next " +
                        std::to_string(body.next_number) + (body.plugged ? "" : ", unplugged") +
                        (body.asleep ? ", asleep" : ""));
    }
    if (now.session.body < now.bodies.size()) {
        for (const auto& [code, property] : body().properties) {
            lines.push_back("property " + hex(code, 4) + " " + std::to_string(property.value) +
                            (property.readable ? "" : " unreadable"));
        }
    }
    lines.push_back("folder " +
                    (now.session.folder.empty() ? "none" : in_quotes(now.session.folder)));
    lines.push_back("buffer " + std::to_string(now.shooting.in_buffer) + " of " +
                    std::to_string(now.setup.buffer));
    lines.push_back("faults " + std::to_string(now.faults.size()));
    lines.push_back("lent " + std::to_string(now.lent_lists.size()) + " lists, " +
                    std::to_string(now.lent_arrays.size()) + " arrays");
    return lines;
}

}  // namespace camera_sim
