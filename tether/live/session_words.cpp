#include "tether/live/session_words.h"

#include <array>
#include <cstdio>

namespace tether {
namespace {

using host::State;

// Problems are sentences.
std::string without_full_stop(const host::Problem& problem) {
    std::string text = shown(problem.text);
    if (text.ends_with('.')) {
        text.pop_back();
    }
    return text;
}

std::string why_no_camera(const host::SessionState& state) {
    for (const host::Problem& problem : state.problems) {
        if (host::severity(problem.code) == host::Severity::error) {
            return without_full_stop(problem);
        }
    }
    return "No camera";
}

}  // namespace

std::string progress_of(const host::SessionState& state) {
    switch (state.state) {
        case State::starting:
            if (state.waited_for) {
                return without_full_stop(*state.waited_for) + "; waiting until it ends";
            }
            return state.problems.empty() ? "starting the worker"
                                          : why_no_camera(state) + "; starting the worker";
        case State::opening:
            return "opening the camera";
        case State::settling:
            return "telling the camera its settings";
        case State::lost:
            return "the camera went away; waiting for it";
        case State::closing:
        case State::idle:
            return state.problems.empty() ? "" : why_no_camera(state) + "; trying again";
        case State::ending:
            return "ending the worker";
        case State::ready:
        case State::down:
            break;
    }
    return {};
}

std::string what_was_wrong(const host::Ended& ended) {
    switch (ended.worker) {
        case host::WorkerEnd::gone:
            return {};
        case host::WorkerEnd::quit:
            if (ended.status == 0) {
                return {};
            }
            return "the worker ended with " + (ended.status > 128
                                                   ? "signal " + std::to_string(ended.status - 128)
                                                   : "status " + std::to_string(ended.status));
        case host::WorkerEnd::input:
            return "the worker did not hear the QUIT and ended only at the end of its input";
        case host::WorkerEnd::sigterm:
            return "the worker had to be ended with SIGTERM";
        case host::WorkerEnd::sigkill:
            return "the worker had to be killed";
    }
    return {};
}

std::string shown(std::string_view text) {
    std::string all;
    bool control = false;  // the byte before begins one of the second set, U+0080 to U+009F
    for (std::size_t at = 0; at < text.size(); ++at) {
        const auto value = static_cast<unsigned char>(text[at]);
        const auto next = at + 1 < text.size() ? static_cast<unsigned char>(text[at + 1]) : 0U;
        const bool begins = value == 0xC2 && next >= 0x80 && next < 0xA0;
        if (value == '\n') {
            all += "\\n";
        } else if (value < ' ' || value == 0x7F || begins || control) {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\x%02X", static_cast<unsigned>(value));
            all += escaped;
        } else {
            all += text[at];
        }
        control = begins;
    }
    return all;
}

std::string sentence(const host::Problem& problem) {
    std::string text = shown(problem.text);
    if (problem.sdk) {
        text.insert(text.ends_with('.') ? text.size() - 1 : text.size(),
                    " (" + host::written_sdk_code(*problem.sdk) + ")");
    }
    return text;
}

std::string in_bytes(std::uintmax_t bytes) {
    constexpr std::array units{"B", "kB", "MB", "GB"};
    double amount = static_cast<double>(bytes);
    std::size_t unit = 0;
    while (amount >= 999.95 && unit + 1 < units.size()) {
        amount /= 1000;
        ++unit;
    }
    char text[32];
    std::snprintf(text, sizeof text, unit == 0 ? "%.0f %s" : "%.1f %s", amount, units[unit]);
    return text;
}

std::string in_seconds(std::chrono::duration<double> time, int digits) {
    char text[32];
    std::snprintf(text, sizeof text, "%.*f s", digits, time.count());
    return text;
}

std::string name_in(const std::string& folder, const std::string& path) {
    return shown(path.starts_with(folder + "/") ? path.substr(folder.size() + 1) : path);
}

}  // namespace tether
