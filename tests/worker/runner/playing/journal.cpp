#include "tests/worker/runner/playing/journal.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <iterator>

#include "tests/worker/runner/reading/steps.h"

namespace transcript {
namespace {

// A loaded machine and sanitizers make everything late, nothing early.
constexpr double slack = 5;
constexpr double clock_step = 0.001;

std::string pause_text(double seconds) {
    return std::to_string(std::lround(seconds * 1000)) + " ms";
}

std::string difference(const Call& expected, const JournaledCall& made, double end_before) {
    if (made.text != expected.text) {
        return made.text;
    }
    if (expected.result && made.result != *expected.result) {
        return made.text + " -> " + made.result;
    }
    if (expected.pause) {
        const double pause = made.start - end_before;
        const double least = std::chrono::duration<double>(*expected.pause).count();
        if (pause < least - clock_step || pause > least + slack) {
            return made.text + " " + pause_text(pause) + " after the call before it";
        }
    }
    return {};
}

}  // namespace

std::optional<JournaledCall> read_journaled_call(std::string_view line) {
    std::array<std::string, 5> fields;
    for (std::size_t field = 0; field < fields.size(); ++field) {
        const std::size_t tab = line.find('\t');
        if ((tab == std::string_view::npos) != (field + 1 == fields.size())) {
            return std::nullopt;
        }
        fields[field] = line.substr(0, tab);
        line.remove_prefix(std::min(tab, line.size() - 1) + 1);
    }
    JournaledCall call;
    call.start = std::strtod(fields[0].c_str(), nullptr);
    call.end = call.start + std::strtod(fields[1].c_str(), nullptr);
    call.thread = fields[2];
    call.text = fields[3];
    call.result = fields[4];
    return call;
}

bool Journal::read_on(std::string& error) {
    if (!stream_.is_open()) {
        stream_.open(file_);
    }
    stream_.clear();
    for (std::string line; std::getline(stream_, line);) {
        unfinished_ += line;
        if (stream_.eof()) {
            break;
        }
        const auto call = read_journaled_call(unfinished_);
        if (!call) {
            error = "no journal line: \"" + unfinished_ + "\"";
            return false;
        }
        unfinished_.clear();
        if (call->text.starts_with("On")) {
            continue;
        }
        if (call->thread != "main") {
            error = call->text + " by the thread \"" + call->thread + "\"";
            return false;
        }
        calls_.push_back(*call);
    }
    return true;
}

std::vector<JournaledCall> Journal::calls(bool with_reads) const {
    std::vector<JournaledCall> wanted;
    std::copy_if(calls_.begin(), calls_.end(), std::back_inserter(wanted),
                 [&](const JournaledCall& call) { return with_reads || !is_read(call.text); });
    return wanted;
}

void Journal::settle() {
    if (!calls_.empty()) {
        settled_end_ = calls_.back().end;
    }
    calls_.clear();
}

std::string compare(const std::vector<Call>& expected, const std::vector<JournaledCall>& made,
                    double end_before) {
    for (std::size_t index = 0; index < expected.size(); ++index) {
        if (index == made.size()) {
            return "no " + expected[index].text;
        }
        const std::string different = difference(expected[index], made[index], end_before);
        if (!different.empty()) {
            return different + " in the place of " + expected[index].text;
        }
        end_before = made[index].end;
    }
    return made.size() > expected.size() ? made[expected.size()].text + " besides" : "";
}

}  // namespace transcript
