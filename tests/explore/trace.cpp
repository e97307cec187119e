#include "tests/explore/trace.h"

#include <cstdio>
#include <deque>
#include <unordered_map>

#include "tests/explore/scheduler.h"

namespace explore {

std::vector<Event> trace;

namespace {

// A deque, so that the views that are the keys stay where they are.
std::deque<std::string> g_texts = {"", "unreadable"};
std::unordered_map<std::string_view, Text> g_numbers = {{g_texts[0], 0},
                                                        {g_texts[1], unreadable_text}};

const char* const call_names[call_count] = {"Init",
                                            "GetSDKVersion",
                                            "EnumCameraObjects",
                                            "ReleaseEnumeration",
                                            "Connect",
                                            "Disconnect",
                                            "ReleaseDevice",
                                            "GetSelectDeviceProperties",
                                            "ReleaseDeviceProperties",
                                            "SetDeviceProperty",
                                            "SendCommand",
                                            "SetSaveInfo",
                                            "Release"};

const char* const callback_names[] = {
    "OnConnected", "OnDisconnected",         "OnWarning",
    "OnError",     "OnPropertyChangedCodes", "OnCompleteDownload"};

std::string numbers(const Event& event) {
    char text[64];
    std::snprintf(text, sizeof text, " 0x%llX %llu", static_cast<unsigned long long>(event.number),
                  static_cast<unsigned long long>(event.value));
    return text + (event.text != 0 ? " \"" + text_of(event.text) + "\"" : std::string());
}

std::string what(const Event& event) {
    const std::string& text = text_of(event.text);
    switch (event.kind) {
        case Kind::host_wrote:
            return "> " + text;
        case Kind::host_closed:
            return "> (end of input)";
        case Kind::host_stopped:
            return "  (the host stops reading)";
        case Kind::host_reads_again:
            return "  (the host reads again)";
        case Kind::signal:
            return "! signal " + std::to_string(event.number);
        case Kind::line:
            return "< " + text;
        case Kind::call_begins:
            return std::string("= ") + call_names[event.which] + numbers(event);
        case Kind::call_ends:
            return std::string("    ") + call_names[event.which] + " gave" + numbers(event);
        case Kind::callback_begins:
            return "! " + std::string(callback_names[event.which]) + numbers(event) +
                   " on thread " + std::to_string(event.who);
        case Kind::callback_ends:
            return "    callback ends on thread " + std::to_string(event.who);
        case Kind::exits:
            return "  exit " + std::to_string(event.number);
        case Kind::exits_at_once:
            return "  _exit " + std::to_string(event.number);
        case Kind::killed:
            return "  killed by signal " + std::to_string(event.number);
        case Kind::clock_jumps:
            return "  (the clock jumps ahead)";
    }
    return "";
}

}  // namespace

const char* name_of(Call call) {
    return call_names[static_cast<int>(call)];
}

Text keep(std::string_view text) {
    const auto known = g_numbers.find(text);
    if (known != g_numbers.end()) {
        return known->second;
    }
    const auto number = static_cast<Text>(g_texts.size());
    g_numbers.emplace(g_texts.emplace_back(text), number);
    return number;
}

const std::string& text_of(Text text) {
    return g_texts[text];
}

void record(Event event) {
    event.time = run.now;
    trace.push_back(event);
}

std::string describe(const Event& event) {
    char time[32];
    std::snprintf(time, sizeof time, "%9.3f ", static_cast<double>(event.time) / 1e9);
    return time + what(event);
}

}  // namespace explore
