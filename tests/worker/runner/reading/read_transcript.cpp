#include "tests/worker/runner/reading/read_transcript.h"

#include <algorithm>
#include <fstream>
#include <string_view>

#include "tests/worker/runner/reading/directives.h"
#include "tests/worker/runner/reading/steps.h"
#include "tests/worker/runner/reading/words.h"

namespace transcript {
namespace {

class Reader {
  public:
    explicit Reader(const std::filesystem::path& file) {
        transcript_.file = file;
    }

    std::optional<Transcript> read(std::string& error) {
        if (!read_file(transcript_.file) || !is_complete()) {
            error = error_;
            return std::nullopt;
        }
        return std::move(transcript_);
    }

  private:
    bool wrong(const std::string& sentence) {
        if (error_.empty()) {
            error_ = place_.file.string() + ":" + std::to_string(place_.line) + ": " + sentence;
        }
        return false;
    }

    bool read_file(const std::filesystem::path& file);
    bool read_line(std::string_view line);
    bool read_block_line(std::string_view line);
    bool read_include(std::string_view name);
    bool add(std::string_view line);
    bool is_complete();

    Transcript transcript_;
    std::vector<std::filesystem::path> open_files_;
    std::optional<Step> block_;  // being read
    std::string unfinished_;     // a list of calls that goes on in the next line
    Place place_;
    std::string error_;
};

bool Reader::read_file(const std::filesystem::path& file) {
    std::ifstream lines(file);
    if (!lines) {
        return wrong("cannot read " + file.string());
    }
    const Place outer = place_;
    open_files_.push_back(file);
    place_ = {file, 0};
    for (std::string line; std::getline(lines, line);) {
        ++place_.line;
        if (!read_line(line)) {
            return false;
        }
    }
    if (block_) {
        return wrong("the block is not closed by a }");
    }
    if (!unfinished_.empty()) {
        return wrong("the list of calls ends with a comma");
    }
    open_files_.pop_back();
    place_ = outer;
    return true;
}

bool Reader::read_line(std::string_view line) {
    if (!unfinished_.empty()) {
        const std::string whole = std::exchange(unfinished_, {}) + " " + std::string(trimmed(line));
        return add(whole);
    }
    if (trimmed(line).empty()) {
        return true;
    }
    if (line.starts_with('#')) {
        if (transcript_.purpose.empty()) {
            transcript_.purpose = trimmed(line.substr(1));
        }
        return true;
    }
    if (block_) {
        return read_block_line(line);
    }
    if (line == "{") {
        block_ = Step{place_, "{", Block{{{}}}};
        return true;
    }
    if (line.starts_with("@ include ")) {
        return read_include(trimmed(line.substr(10)));
    }
    const bool set_up = transcript_.steps.empty() && open_files_.size() == 1;
    if (line.starts_with("@ ") && is_directive(line.substr(2))) {
        std::string error;
        if (!set_up) {
            return wrong("directives stand before the first step");
        }
        return read_directive(line.substr(2), transcript_, error) || wrong(error);
    }
    constexpr std::string_view marks = "><!=@{|}";
    if (set_up && marks.find(line.front()) == std::string_view::npos) {
        transcript_.scene.emplace_back(line);
        return true;
    }
    return add(line);
}

bool Reader::read_block_line(std::string_view line) {
    auto& lanes = std::get<Block>(block_->action).lanes;
    if (line == "|" || line == "}") {
        if (lanes.back().empty()) {
            return wrong("a lane without a line");
        }
        if (line == "|") {
            lanes.emplace_back();
        } else {
            transcript_.steps.push_back(std::move(*block_));
            block_.reset();
        }
        return true;
    }
    std::string error;
    const auto action = read_step(line, error);
    if (!action || !std::holds_alternative<Expect>(*action)) {
        return wrong(action ? "a block holds lines of output only" : error);
    }
    lanes.back().push_back(std::get<Expect>(*action));
    return true;
}

bool Reader::read_include(std::string_view name) {
    // Relative to the folder of all transcripts, wherever below it the transcript stands.
    for (auto folder = std::filesystem::absolute(transcript_.file).parent_path();;
         folder = folder.parent_path()) {
        const auto file = folder / name;
        if (std::find(open_files_.begin(), open_files_.end(), file) != open_files_.end()) {
            return wrong(std::string(name) + " includes itself");
        }
        if (std::filesystem::is_regular_file(file)) {
            return read_file(file);
        }
        if (folder == folder.parent_path()) {
            return wrong("there is no " + std::string(name) + " in this folder or above it");
        }
    }
}

bool Reader::add(std::string_view line) {
    if (line.starts_with("=") && line.ends_with(',')) {
        unfinished_ = line;
        return true;
    }
    std::string error;
    auto action = read_step(line, error);
    if (!action) {
        return wrong(error);
    }
    auto* calls = std::get_if<Calls>(&*action);
    if (calls != nullptr) {
        calls->with_reads = transcript_.reads && open_files_.size() == 1;
        if (!calls->with_reads &&
            std::any_of(calls->calls.begin(), calls->calls.end(),
                        [](const Call& call) { return is_read(call.text); })) {
            return wrong("reads are shown only with \"@ reads\"");
        }
    }
    const bool ended = !transcript_.steps.empty() &&
                       std::any_of(transcript_.steps.begin(), transcript_.steps.end(),
                                   [](const Step& step) { return step.is_end(); });
    if (ended && calls == nullptr) {
        return wrong("only calls can follow the end of the worker");
    }
    transcript_.steps.push_back({place_, std::string(line), std::move(*action)});
    return true;
}

bool Reader::is_complete() {
    place_ = {transcript_.file, 1};
    if (transcript_.purpose.empty()) {
        return wrong("a transcript opens with a sentence on what it proves");
    }
    const bool proves =
        std::any_of(transcript_.steps.begin(), transcript_.steps.end(), [](const Step& step) {
            return std::holds_alternative<Expect>(step.action) ||
                   std::holds_alternative<Block>(step.action) ||
                   std::holds_alternative<Calls>(step.action) || step.is_end();
        });
    return proves || wrong("the transcript expects nothing, so it proves nothing");
}

}  // namespace

std::optional<Transcript> read_transcript(const std::filesystem::path& file, std::string& error) {
    return Reader(file).read(error);
}

}  // namespace transcript
