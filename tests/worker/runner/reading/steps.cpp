#include "tests/worker/runner/reading/steps.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <signal.h>

#include "tests/worker/runner/reading/words.h"

namespace transcript {
namespace {

constexpr std::array<std::string_view, 13> sdk_calls{"Init",
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

std::string_view first_word(std::string_view text) {
    return text.substr(0, text.find(' '));
}

// Quoted text may hold several lines: they are one lane.
std::optional<Action> read_quoted_lines(std::string_view text, std::string& error) {
    const auto pause = take_pause(text);
    auto bytes = read_bytes(text);
    if (!bytes) {
        error = "<< wants quoted text";
        return std::nullopt;
    }
    if (bytes->ends_with('\n')) {
        bytes->pop_back();
    }
    std::vector<Expect> lane;
    for (std::size_t begin = 0; begin <= bytes->size();) {
        const std::size_t end = std::min(bytes->find('\n', begin), bytes->size());
        lane.push_back({bytes->substr(begin, end - begin), {}});
        begin = end + 1;
    }
    lane.front().not_before = pause;
    if (lane.size() == 1) {
        return lane.front();
    }
    return Block{{lane}};
}

std::optional<Action> read_calls(std::string_view text, std::string& error) {
    Calls calls;
    if (trimmed(text).empty()) {
        return calls;
    }
    for (std::string_view piece : split_list(text)) {
        Call call;
        call.pause = take_pause(piece);
        if (const std::size_t arrow = piece.rfind(" -> "); arrow != std::string_view::npos) {
            call.result = trimmed(piece.substr(arrow + 4));
            piece = piece.substr(0, arrow);
        }
        call.text = trimmed(piece);
        if (std::find(sdk_calls.begin(), sdk_calls.end(), first_word(call.text)) ==
            sdk_calls.end()) {
            error = "\"" + call.text + "\" is no call of the SDK";
            return std::nullopt;
        }
        calls.calls.push_back(call);
    }
    return calls;
}

std::optional<Action> read_signal(std::string_view name, std::string& error) {
    if (name == "TERM") {
        return Signal{SIGTERM};
    }
    if (name == "INT") {
        return Signal{SIGINT};
    }
    if (name == "HUP") {
        return Signal{SIGHUP};
    }
    error = "@ signal wants TERM, INT or HUP";
    return std::nullopt;
}

std::optional<Action> read_exits(const std::vector<std::string>& words, std::string& error) {
    Exits exits;
    error = "@ exits wants a status, then perhaps \"within T\" and \"after T\"";
    if (words.size() < 2 || words.size() % 2 != 0) {
        return std::nullopt;
    }
    const std::string& status = words[1];
    if (std::from_chars(status.data(), status.data() + status.size(), exits.status).ptr !=
        status.data() + status.size()) {
        return std::nullopt;
    }
    for (std::size_t next = 2; next < words.size(); next += 2) {
        const auto duration = read_duration(words[next + 1]);
        if (!duration || (words[next] != "within" && words[next] != "after")) {
            return std::nullopt;
        }
        (words[next] == "within" ? exits.within : exits.not_before) = duration;
    }
    error.clear();
    return exits;
}

std::optional<Action> read_process_step(std::string_view text, std::string& error) {
    const auto words = read_words(text);
    if (words && *words == std::vector<std::string>{"close", "stdin"}) {
        return CloseInput{};
    }
    if (words && *words == std::vector<std::string>{"close", "stdout"}) {
        return CloseOutput{};
    }
    if (words && words->size() == 2 && words->front() == "signal") {
        return read_signal(words->back(), error);
    }
    if (words && !words->empty() && words->front() == "exits") {
        return read_exits(*words, error);
    }
    if (words && words->size() == 3 && words->front() == "killed" && (*words)[1] == "after") {
        if (const auto duration = read_duration(words->back())) {
            return Killed{*duration};
        }
    }
    error = "unknown step \"@ " + std::string(text) + "\"";
    return std::nullopt;
}

}  // namespace

std::optional<Action> read_step(std::string_view line, std::string& error) {
    const std::string_view mark = first_word(line);
    const std::string_view text = line.substr(std::min(mark.size() + 1, line.size()));
    if (mark == ">") {
        return Send{std::string(text) + "\n"};
    }
    if (mark == ">>") {
        if (const auto bytes = read_bytes(text)) {
            return Send{*bytes};
        }
        error = ">> wants quoted text";
        return std::nullopt;
    }
    if (mark == "<") {
        std::string_view line_text = text;
        const auto pause = take_pause(line_text);
        return Expect{std::string(line_text), pause};
    }
    if (mark == "<<") {
        return read_quoted_lines(text, error);
    }
    if (mark == "!" && !trimmed(text).empty()) {
        return Control{std::string(trimmed(text))};
    }
    if (mark == "=") {
        return read_calls(text, error);
    }
    if (mark == "@") {
        return read_process_step(text, error);
    }
    error = "unknown step \"" + std::string(line) + "\"";
    return std::nullopt;
}

bool is_read(std::string_view call) {
    const std::string_view name = first_word(call);
    return name == "GetSelectDeviceProperties" || name == "ReleaseDeviceProperties" ||
           name == "ReleaseEnumeration";
}

}  // namespace transcript
