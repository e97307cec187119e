// Prints the table of facts for a reader.
#include <cstdio>

#include "tests/tether/faults/facts.h"

namespace {

// As a cell of a table.
std::string cell(const std::string& text) {
    std::string escaped;
    for (const char byte : text) {
        escaped += byte == '|' ? "\\|" : byte == '\n' ? "; " : std::string(1, byte);
    }
    return escaped;
}

std::string happens(const Fact& fact) {
    std::string text = *fact.scene == 0 ? "" : "`" + cell(fact.scene) + "`";
    for (const Moment& moment : fact.moments) {
        text += (text.empty() ? "" : "; ") + ("after `" + cell(moment.after) + "` ") + "`" +
                cell(moment.told) + "`";
    }
    for (std::size_t index = 0; index < fact.options.size(); index += 2) {
        text += std::string(index == 0 ? " (`" : " ") + fact.options[index] + " " +
                fact.options[index + 1];
    }
    return fact.options.empty() ? text : text + "`)";
}

}  // namespace

int main() {
    std::printf(
        "| What happens to the camera | Brought | Lost | What `tether shoot` says | Status |\n"
        "|---|---|---|---|---|\n");
    for (const Fact& fact : facts) {
        std::string said;
        for (const char* line : fact.said) {
            said += (said.empty() ? "" : "<br>") + cell(line);
        }
        std::printf("| %s | %s | %s | %s | %d |\n", happens(fact).c_str(), fact.brought, fact.lost,
                    said.c_str(), fact.status);
    }
}
