// The table of facts has a row for everything that docs/simulator.md says can be told to the
// virtual camera, and for every function of the SDK.
#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "tests/tether/faults/facts.h"

namespace {

std::string text_of(const std::string& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

// "card in|out|full" is three, "unplug [reconnecting]" is two; what else stands in brackets narrows
// a form and makes none of its own.
std::vector<std::string> forms_of(std::string command) {
    const std::size_t bracket = command.find(" [reconnecting]");
    if (bracket != std::string::npos) {
        const std::string bare = command.substr(0, bracket);
        return {bare, bare + " reconnecting"};
    }
    if (command.starts_with("camera ")) {
        command = command.substr(0, command.find(" ["));
    }
    const std::size_t bar = command.find('|');
    if (bar == std::string::npos) {
        return {command};
    }
    const std::size_t first = command.rfind(' ', bar) + 1;
    const std::string before = command.substr(0, first);
    std::vector<std::string> forms;
    for (std::size_t at = first; at <= command.size();) {
        const std::size_t end = std::min(command.find('|', at), command.size());
        forms.push_back(before + command.substr(at, end - at));
        at = end + 1;
    }
    return forms;
}

// The first cells of the tables from "What there is" to the commands that only ask.
std::set<std::string> forms_of_the_page() {
    std::string page = text_of(SIMULATOR_PAGE);
    const std::size_t begin = page.find("### What there is");
    const std::size_t end = page.find("### Live only");
    EXPECT_LT(begin, end);
    page = page.substr(begin, end - begin);
    std::set<std::string> forms;
    for (std::size_t at = 0; (at = page.find("\n| `", at)) != std::string::npos;) {
        at += 4;
        std::string cell = page.substr(at, page.find('`', at) - at);
        for (std::size_t bar = 0; (bar = cell.find("\\|")) != std::string::npos;) {
            cell.erase(bar, 1);
        }
        for (const std::string& form : forms_of(cell)) {
            forms.insert(form);
        }
    }
    return forms;
}

TEST(FaultTable, HasEveryFormOfTheVirtualCamerasPage) {
    const std::set<std::string> page = forms_of_the_page();
    EXPECT_GT(page.size(), 75U);
    std::set<std::string> known;
    for (const Fact& fact : facts) {
        std::istringstream forms(fact.form);
        for (std::string form; std::getline(forms, form, ';');) {
            known.insert(form);
            EXPECT_EQ(page.count(form), 1U) << form << " is not on the page";
        }
    }
    for (const std::string& form : page) {
        EXPECT_EQ(known.count(form), 1U) << form << " has no row";
    }
}

// Each fails or answers something else, comes late, and hangs, as far as it can.
TEST(FaultTable, HasEveryFunctionOfTheSdk) {
    const std::string header = text_of(SDK_HEADER);
    const std::string mark = "\nCR_SDK_API ";
    int functions = 0;
    for (std::size_t at = 0; (at = header.find(mark, at)) != std::string::npos;) {
        at += mark.size();
        const std::size_t end = header.find('(', at);
        const std::size_t begin = header.rfind(' ', end) + 1;
        const std::string function = header.substr(begin, end - begin);
        ++functions;
        for (const std::string response : {" answers ", " late ", " hangs"}) {
            const bool known = std::any_of(facts.begin(), facts.end(), [&](const Fact& fact) {
                const std::string scene = fact.scene;
                return scene.find(function) != std::string::npos &&
                       scene.find(response) != std::string::npos;
            });
            EXPECT_TRUE(known) << function << response << "has no row";
        }
    }
    EXPECT_EQ(functions, 12);
}

}  // namespace
