// The verbs for faults: which subject takes which responses, and what ends them.

#include "simulator/sdk/faults.h"

#include <algorithm>
#include <cstring>

#include "simulator/camera/state.h"
#include "simulator/control/scene/language.h"
#include "simulator/control/scene/words.h"

namespace camera_sim {
namespace {

struct Subject {
    const char* name;
    bool (*read)(const Subject& subject, Words& words, Response& response);
    bool has_code = false;
    const char* lent = nullptr;  // what the call lends, as the language calls it
};

// Each reads one response and says whether it was one.

bool read_given(const Subject& subject, Words& words, Response& response) {
    if (subject.lent == nullptr) {
        return false;
    }
    const bool is_list = std::strcmp(subject.lent, "list") == 0;
    if (words.take("null")) {
        response.gives_null = true;
    } else if (words.take("nothing")) {
        response.gives_nothing = true;
    } else if (!is_list && words.take("unreadable")) {
        response.gives_unreadable = true;
    } else {
        response.gives = is_list ? words.code("COUNT") : words.number("VALUE");
    }
    return true;
}

bool read_delay(Words& words, Response& response) {
    if (words.take("late")) {
        response.late = words.duration("T");
        return true;
    }
    if (words.take("hangs")) {
        response.hangs = true;
        return true;
    }
    return false;
}

bool of_call(const Subject& subject, Words& words, Response& response) {
    if (words.take("answers")) {
        response.answers = words.code("RESULT");
        if (words.take("with")) {
            response.lends = subject.lent != nullptr && words.take(subject.lent);
            return response.lends;
        }
        return true;
    }
    if (words.take("gives")) {
        return read_given(subject, words, response);
    }
    return read_delay(words, response);
}

bool of_switch(const Subject&, Words& words, Response& response) {
    if (words.take("answers")) {
        const bool yes = words.take("true");
        response.answers = yes ? 1 : 0;
        return yes || words.take("false");
    }
    return read_delay(words, response);
}

bool of_hand_back(const Subject&, Words& words, Response& response) {
    return read_delay(words, response);
}

bool of_file(const Subject&, Words& words, Response& response) {
    if (words.take("late")) {
        response.late = words.duration("T");
    } else if (words.take("truncated")) {
        response.truncated = true;
    } else if (words.take("missing")) {
        response.missing = true;
    } else if (words.take("twice")) {
        response.twice = true;
    } else if (words.take("absolute")) {
        response.absolute = true;
    } else if (words.take("named")) {
        response.named = words.text_or_null("NAME");
    } else if (words.take("number")) {
        response.number = words.code("NUMBER");
    } else {
        return false;
    }
    return true;
}

bool of_pair(const Subject&, Words& words, Response& response) {
    if (words.take("reversed")) {
        response.reversed = true;
    } else if (words.take("half")) {
        response.half = true;
    } else {
        return false;
    }
    return true;
}

constexpr Subject subjects[] = {
    {"Init", of_switch},
    {"Release", of_switch},
    {"GetSDKVersion", of_call},
    {"EnumCameraObjects", of_call, false, "list"},
    {"ReleaseEnumeration", of_hand_back},
    {"Connect", of_call},
    {"Disconnect", of_call},
    {"ReleaseDevice", of_call},
    {"GetSelectDeviceProperties", of_call, true, "array"},
    {"ReleaseDeviceProperties", of_call},
    {"SetDeviceProperty", of_call, true},
    {"SendCommand", of_call, true},
    {"SetSaveInfo", of_call},
    {"file", of_file},
    {"pair", of_pair},
};

void add_fault(Words& words, std::uint64_t times) SIM_REQUIRES(g_lock) {
    const std::string name = words.word("SUBJECT");
    const Subject* subject =
        std::find_if(std::begin(subjects), std::end(subjects),
                     [&name](const Subject& candidate) { return name == candidate.name; });
    if (subject == std::end(subjects)) {
        words.wrong("\"" + name + "\" is no function of the SDK, nor file or pair");
        return;
    }
    Fault fault{name, std::nullopt, {}, times};
    if (subject->has_code && words.next_is_number()) {
        fault.code = words.code("CODE");
    }
    do {
        const std::string response = words.next_text();
        if (!subject->read(*subject, words, fault.response)) {
            words.wrong(response.empty() ? "a response is missing"
                                         : "\"" + response + "\" is no response of " + name);
        }
    } while (words.left() && words.error().empty());
    if (words.finished()) {
        state().faults.push_back(std::move(fault));
    }
}

void add_next_fault(Words& words) SIM_REQUIRES(g_lock) {
    const std::uint64_t times = words.next_is_number() ? words.number("N") : 1;
    if (times == 0) {
        words.wrong("N is at least 1");
    }
    add_fault(words, times);
}

void add_standing_fault(Words& words) SIM_REQUIRES(g_lock) {
    add_fault(words, 0);
}

void clear_faults(Words& words) SIM_REQUIRES(g_lock) {
    if (!words.take("faults")) {
        words.wrong("clear faults");
    }
    if (words.finished()) {
        state().faults.clear();
    }
}

void resume(Words& words) SIM_REQUIRES(g_lock) {
    if (words.finished()) {
        ++state().resumes;
        g_changed.notify_all();
    }
}

}  // namespace

const Verb fault_verbs[] = {
    {"next", "[N] SUBJECT [CODE] RESPONSE...", add_next_fault},
    {"every", "SUBJECT [CODE] RESPONSE...", add_standing_fault},
    {"clear", "faults", clear_faults},
    {"resume", "", resume},
    {nullptr, nullptr, nullptr},
};

}  // namespace camera_sim
