#include "simulator/faults.h"

#include <algorithm>
#include <cstring>

#include "simulator/state.h"
#include "simulator/words.h"

namespace camera_sim {
namespace {

struct Function {
    const char* name;
    bool has_code;
    bool answers_bool;
    bool lends;
};

constexpr Function functions[] = {
    {"Init", false, true, false},
    {"Release", false, true, false},
    {"GetSDKVersion", false, false, false},
    {"EnumCameraObjects", false, false, true},
    {"ReleaseEnumeration", false, false, false},
    {"Connect", false, false, false},
    {"Disconnect", false, false, false},
    {"ReleaseDevice", false, false, false},
    {"GetSelectDeviceProperties", true, false, true},
    {"ReleaseDeviceProperties", false, false, false},
    {"SetDeviceProperty", true, false, false},
    {"SendCommand", true, false, false},
    {"SetSaveInfo", false, false, false},
};

void read_given(const Function& function, Words& words, Response& response) {
    const bool is_list = std::strcmp(function.name, "EnumCameraObjects") == 0;
    if (!function.lends) {
        words.wrong(std::string(function.name) + " gives nothing but its result");
    } else if (words.take("null")) {
        response.gives_null = true;
    } else if (words.take("nothing")) {
        response.gives_nothing = true;
    } else if (!is_list && words.take("unreadable")) {
        response.gives_unreadable = true;
    } else {
        response.gives = words.number(is_list ? "COUNT" : "VALUE");
    }
}

void read_answer(const Function& function, Words& words, Response& response) {
    if (!function.answers_bool) {
        response.answers = words.code("RESULT");
    } else if (words.take("true")) {
        response.answers = 1;
    } else if (words.take("false")) {
        response.answers = 0;
    } else {
        words.wrong(std::string(function.name) + " answers true or false");
    }
    if (words.take("with")) {
        const char* lent = std::strcmp(function.name, "EnumCameraObjects") == 0 ? "list" : "array";
        response.lends = words.take(lent);
        if (!function.lends || !response.lends) {
            words.wrong("only EnumCameraObjects answers with list, a property read with array");
        }
    }
}

Response read_response(const Function& function, Words& words) {
    Response response;
    if (!words.left()) {
        words.wrong("a response is missing: answers R, late T, hangs or gives ...");
    }
    while (words.left() && words.error().empty()) {
        if (words.take("answers")) {
            read_answer(function, words, response);
        } else if (words.take("late")) {
            response.late = words.duration("T");
        } else if (words.take("hangs")) {
            response.hangs = true;
        } else if (words.take("gives")) {
            read_given(function, words, response);
        } else {
            words.wrong("\"" + words.text("RESPONSE") +
                        "\" is no response: answers R, late T, hangs or gives ...");
        }
    }
    return response;
}

void add_fault(Words& words, std::uint64_t calls) SIM_REQUIRES(g_lock) {
    const std::string name = words.word("FUNCTION");
    const Function* function =
        std::find_if(std::begin(functions), std::end(functions),
                     [&name](const Function& candidate) { return name == candidate.name; });
    if (function == std::end(functions)) {
        words.wrong("\"" + name + "\" is not a function of the SDK");
        return;
    }
    Fault fault{name, std::nullopt, {}, calls};
    if (words.next_is_number()) {
        fault.code = words.code("CODE");
        if (!function->has_code) {
            words.wrong(name + " has no code");
        }
    }
    fault.response = read_response(*function, words);
    if (words.finished()) {
        state().faults.push_back(std::move(fault));
    }
}

}  // namespace

void add_next_fault(Words& words) {
    const std::uint64_t calls = words.next_is_number() ? words.number("N") : 1;
    if (calls == 0) {
        words.wrong("N is at least 1");
    }
    add_fault(words, calls);
}

void add_standing_fault(Words& words) {
    add_fault(words, 0);
}

Response take_fault(const std::string& function, std::optional<CrInt32u> code) {
    auto& faults = state().faults;
    const auto matches = [&](const Fault& fault, bool standing) {
        return fault.function == function && (!fault.code || fault.code == code) &&
               (fault.calls == 0) == standing;
    };
    for (const bool standing : {false, true}) {
        const auto fault = std::find_if(faults.begin(), faults.end(), [&](const Fault& candidate) {
            return matches(candidate, standing);
        });
        if (fault == faults.end()) {
            continue;
        }
        const Response response = fault->response;
        if (!standing && --fault->calls == 0) {
            faults.erase(fault);
        }
        return response;
    }
    return {};
}

}  // namespace camera_sim
