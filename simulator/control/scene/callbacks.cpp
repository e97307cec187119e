// The verbs for callbacks as they stand, which change nothing at the camera, and the prefixes that
// say where and when the callbacks of another line come.

#include <algorithm>
#include <initializer_list>
#include <string_view>

#include "simulator/camera/state.h"
#include "simulator/control/scene/language.h"
#include "simulator/control/scene/words.h"
#include "simulator/sdk/delivery.h"

namespace camera_sim {
namespace {

bool an_application(Words& words) SIM_REQUIRES(g_lock) {
    if (words.purpose() == Words::For::doing && state().application == nullptr) {
        words.wrong("no application has called Connect");
        return false;
    }
    return words.finished();
}

void call_connected(Words& words) SIM_REQUIRES(g_lock) {
    const CrInt32u version = words.take("-1") ? 0xFFFFFFFF : words.code("VERSION");
    if (an_application(words)) {
        callback::connected(static_cast<CrInt32>(version));
    }
}

template <void (*call)(CrInt32u)>
void call_with_code(Words& words) SIM_REQUIRES(g_lock) {
    const CrInt32u code = words.code("CODE");
    if (an_application(words)) {
        call(code);
    }
}

std::vector<CrInt32u> read_codes(Words& words) {
    std::vector<CrInt32u> codes;
    do {
        codes.push_back(words.code("CODE"));
    } while (words.left() && words.error().empty());
    return codes;
}

void call_properties(Words& words) SIM_REQUIRES(g_lock) {
    if (words.take("null")) {
        const CrInt32u count = words.code("N");
        if (an_application(words)) {
            callback::null_properties(count);
        }
        return;
    }
    const auto codes = words.take("none") ? std::vector<CrInt32u>() : read_codes(words);
    if (an_application(words)) {
        callback::properties(codes);
    }
}

void show_caution(Words& words) SIM_REQUIRES(g_lock) {
    if (an_application(words)) {
        callback::warning(warning::caution);
    }
}

void call_download(Words& words) SIM_REQUIRES(g_lock) {
    const auto name = words.text_or_null("NAME");
    const CrInt32u type = words.code("NUMBER");
    if (an_application(words)) {
        callback::download(name, type);
    }
}

void storm(Words& words) SIM_REQUIRES(g_lock) {
    const CrInt32u notices = words.count("N");
    const std::vector<CrInt32u> codes = read_codes(words);
    for (CrInt32u notice = 0; an_application(words) && notice < notices; ++notice) {
        const DeliveringThread from(static_cast<int>(notice % 2));
        callback::properties(codes);
    }
}

void crowd(Words& words) SIM_REQUIRES(g_lock) {
    const CrInt32u files = words.count("N");
    if (an_application(words)) {
        callback::crowd(files);
    }
}

// What stands behind a prefix. Prefixes have one order, so that no line is longer to follow than to
// read: `during Release`, then `second`.
std::string prefixed_line(Words& words, const char* prefix,
                          std::initializer_list<std::string_view> never_behind) {
    const std::string first = words.next_text();
    if (std::find(never_behind.begin(), never_behind.end(), first) != never_behind.end()) {
        words.wrong("\"" + first + "\" does not stand behind \"" + prefix + "\"");
    }
    return words.rest();
}

void second(Words& words) SIM_REQUIRES(g_lock) {
    const std::string line = prefixed_line(words, "second", {"second", "during"});
    if (line.empty()) {
        words.wrong("\"second\" stands before another command");
    } else if (!words.error().empty()) {
        return;
    } else if (words.purpose() == Words::For::checking) {
        words.wrong(check_line(line));
    } else {
        const DeliveringThread from(1);
        words.wrong(run_line(line));
    }
}

void during_release(Words& words) SIM_REQUIRES(g_lock) {
    if (!words.take("Release")) {
        words.wrong("during Release LINE");
        return;
    }
    const std::string line = prefixed_line(words, "during Release", {"during"});
    Words inner(line);
    if (!inner.left() || !is_verb(inner.text("VERB"))) {
        words.wrong("\"" + line + "\" is no command of the scene language");
    }
    // Now, while there is somebody to tell: at Release it would stop the process.
    words.wrong(words.error().empty() ? check_line(line) : "");
    if (words.finished()) {
        state().during_release.push_back(line);
    }
}

}  // namespace

const Verb callback_verbs[] = {
    {"connected", "VERSION", call_connected},
    {"disconnected", "CODE", call_with_code<callback::disconnected>},
    {"warning", "CODE", call_with_code<callback::warning>},
    {"caution", "", show_caution},
    {"error", "CODE", call_with_code<callback::error>},
    {"properties", "CODE...", call_properties},
    {"properties", "none", call_properties},
    {"properties", "null N", call_properties},
    {"deliver", "NAME NUMBER", call_download},
    {"storm", "N CODE...", storm},
    {"crowd", "N", crowd},
    {"second", "LINE", second},
    {"during", "Release LINE", during_release},
    {nullptr, nullptr, nullptr},
};

}  // namespace camera_sim
