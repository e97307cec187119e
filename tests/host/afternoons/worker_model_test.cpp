// The worker of the afternoons says what the real one says: it plays transcripts that the real one
// passes, with the same lines from the host and the same things happening to the camera.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "tests/host/afternoons/model/worker.h"
#include "tests/worker/runner/reading/read_transcript.h"

namespace afternoons {
namespace {

namespace fs = std::filesystem;
using transcript::Block;
using transcript::Control;
using transcript::Expect;
using transcript::Send;

class Playing final : public Surroundings {
  public:
    explicit Playing(const transcript::Transcript& transcript) : transcript_(transcript) {
        camera_.looking = {};
        camera_.opening = {};
        camera_.exposure = {};
        camera_.transfer = {};
        camera_.answer = Answer::normal;
        const std::vector<std::string>& arguments = transcript.arguments;
        worker_ =
            std::make_unique<Worker>(agenda_, camera_, *this, arguments.empty() ? "" : arguments[0],
                                     arguments.size() < 3 ? "both" : arguments[2], Nature::usual);
        for (const std::string& line : transcript.scene) {
            happen(line);
        }
        worker_->start();
        agenda_.run_until(agenda_.now() + seconds(1));
        said_.clear();
    }

    // Why it does not come true; empty: it does.
    std::string play() {
        for (const transcript::Step& step : transcript_.steps) {
            if (const auto* send = std::get_if<Send>(&step.action)) {
                std::istringstream lines(send->bytes);
                began_ = agenda_.now();
                for (std::string line; std::getline(lines, line);) {
                    worker_->hear(line);
                }
            } else if (const auto* control = std::get_if<Control>(&step.action)) {
                happen(control->line);
            } else if (const auto* expect = std::get_if<Expect>(&step.action)) {
                wait_for(1);
                if (said_.empty() || said_.front() != expect->text) {
                    wrong_ = step.written + "\n  it says " + (said_.empty() ? "" : said_.front());
                } else if (expect->not_before && agenda_.now() < began_ + *expect->not_before) {
                    wrong_ = step.written + "\n  it comes too soon";
                } else {
                    said_.erase(said_.begin());
                }
            } else if (const auto* block = std::get_if<Block>(&step.action)) {
                hear_block(*block, step.written);
            } else if (std::holds_alternative<transcript::CloseInput>(step.action)) {
                worker_->close_input();
            } else if (!std::holds_alternative<transcript::Calls>(step.action) &&
                       !std::holds_alternative<transcript::Exits>(step.action)) {
                wrong_ = "it has a step that the model does not know: " + step.written;
            }
            if (!wrong_.empty()) {
                return wrong_;
            }
        }
        agenda_.run_until(agenda_.now() + milliseconds(200));
        return said_.empty() ? "" : "behind its end it says " + said_.front();
    }

    void line(const std::string& text, bool) override {
        said_.push_back(text);
    }
    void ended(int) override {}
    Press* pressed(std::optional<Number>) override {
        return &press_;
    }
    File* landed(const Press&, const std::string&, host::Kind, bool, const std::string&) override {
        return &file_;
    }
    bool taken(const std::string&, const std::string&) override {
        return false;
    }

  private:
    void wait_for(std::size_t lines) {
        const Time end = agenda_.now() + seconds(30);
        while (said_.size() < lines && agenda_.next() <= end) {
            agenda_.run_until(agenda_.next());
        }
    }

    // Of each lane in order, the lanes interleaved anyhow.
    void hear_block(const Block& block, const std::string& written) {
        std::vector<std::size_t> at(block.lanes.size());
        std::size_t left = 0;
        for (const auto& lane : block.lanes) {
            left += lane.size();
        }
        for (; left > 0; --left) {
            wait_for(1);
            bool found = false;
            for (std::size_t lane = 0; lane < at.size() && !found && !said_.empty(); ++lane) {
                found = at[lane] < block.lanes[lane].size() &&
                        block.lanes[lane][at[lane]].text == said_.front();
                at[lane] += found ? 1 : 0;
            }
            if (!found) {
                wrong_ = written + "\n  it says " + (said_.empty() ? "nothing" : said_.front());
                return;
            }
            said_.erase(said_.begin());
        }
    }

    void describe_camera(const std::string& line) {
        camera_.model = line.substr(8, line.find('"', 8) - 8);
        if (line.find(" over USB") == std::string::npos) {
            wrong_ = "the model has a camera on USB only";
        }
        camera_.card = line.find("card out") != std::string::npos    ? Card::out
                       : line.find("card full") != std::string::npos ? Card::full
                                                                     : Card::in;
    }

    void answer_openings(const std::string& how, const std::string& code) {
        const bool with_code = how == "error" || how == "disconnected";
        if (how != "never" && how != "normal" && !with_code) {
            wrong_ = "the model does not know \"answer " + how + "\"";
            return;
        }
        camera_.answer = how == "never"    ? Answer::never
                         : how == "normal" ? Answer::normal
                         : how == "error"  ? Answer::error
                                           : Answer::disconnected;
        if (with_code) {
            camera_.answer_code = "0x" + eight_digits(code);
        }
    }

    // By the SDK, out of nowhere.
    void worker_is_told(const std::string& what, const std::string& code) {
        if (what == "error") {
            worker_->on_error("0x" + eight_digits(code));
        } else if (what == "disconnected") {
            worker_->on_disconnected("0x" + eight_digits(code));
        } else if (what == "caution" || code == "0x0002008C") {
            worker_->on_warning("the camera is showing a caution on its own screen (0x0002008C)");
        } else if (code == "0x00020002") {
            worker_->on_reconnecting();
        } else {
            worker_->on_warning("warning 0x" + eight_digits(code));
        }
    }

    // The words of the virtual camera's scenes.
    void happen(const std::string& line) {
        std::istringstream fields(line);
        std::string word;
        std::string next;
        fields >> word >> next;
        if (word == "camera") {
            describe_camera(line);
        } else if (line == "no camera") {
            camera_.there = false;
        } else if (word == "card") {
            camera_.card = next == "out" ? Card::out : next == "full" ? Card::full : Card::in;
            worker_->card_changed();
        } else if (word == "dial") {
            camera_.dial = next == "jpeg"   ? 1
                           : next == "raw"  ? 2
                           : next == "both" ? 3
                           : next == "heif"
                               ? 4
                               : static_cast<int>(std::strtol(next.c_str(), nullptr, 0));
            worker_->dial_turned();
        } else if (word == "unplug" || line == "sleep") {
            camera_.there = false;
            worker_->unplug(word == "sleep" || next == "reconnecting");
        } else if (word == "plug" || word == "wake") {
            camera_.there = true;
            worker_->plug();
        } else if (word == "answer") {
            std::string code;
            fields >> code;
            answer_openings(next, code);
        } else if (word == "error" || word == "caution" || word == "warning" ||
                   word == "disconnected") {
            worker_is_told(word, next);
        } else if (word == "deliver" && line.find('"') != std::string::npos) {
            if (line.find("0xFFFFFFFF") != std::string::npos) {
                worker_->report(quoted(line), nullptr);
            }
        } else if (line == "no focus" || line == "focus") {
            camera_.focuses = line == "focus";
        } else if (word == "counter") {
            camera_.counter = std::atoi(next.c_str());
        } else if (word == "shutter") {
            worker_->shutter({});
        } else if ((word == "unreadable" || word == "readable") &&
                   (next == "0x0708" || next == "0x0106")) {
            (next == "0x0708" ? camera_.card_unreadable : camera_.type_unreadable) =
                word == "unreadable";
        } else if (word == "next" || word == "every") {
            go_wrong(line);
        } else if (line != "wait" && word != "timing" && word != "picture") {
            wrong_ = "the model does not know: " + line;
        }
    }

    // next [N] SetDeviceProperty CODE answers R, next file or pair and what is wrong with it; what
    // takes another shape, the model does not know.
    void go_wrong(const std::string& line) {
        std::istringstream fields(line);
        std::string when;
        std::string subject;
        fields >> when >> subject;
        int times = when == "every" ? -1 : 1;
        if (subject.find_first_not_of("0123456789") == std::string::npos) {
            times = std::atoi(subject.c_str());
            fields >> subject;
        }
        std::string code;
        std::string answers;
        std::string result;
        std::string rest;
        fields >> code >> answers >> result >> rest;
        if (subject == "SetDeviceProperty" && answers == "answers" && rest.empty()) {
            const int property = static_cast<int>(std::strtol(code.c_str(), nullptr, 0));
            if (property == 0x0106 || property == 0x0119 || property == 0x011A ||
                property == 0x0507) {
                camera_.refusals.push_back(
                    {property, result == "0" ? "" : "0x" + eight_digits(result), times});
                return;
            }
        } else if (subject == "pair" && answers.empty() && when == "next") {
            camera_.pair_reversed = camera_.pair_reversed || code == "reversed";
            camera_.pair_half = camera_.pair_half || code == "half";
            return;
        } else if (subject == "file" && when == "next" && times == 1) {
            FileFault fault;
            fault.truncated = code == "truncated";
            fault.missing = code == "missing";
            fault.absolute = code == "absolute";
            if (code == "twice") {
                fault.again = Time{};
            } else if (code == "named" && line.find('"') != std::string::npos) {
                fault.named = quoted(line);
            } else if (code == "late") {
                fault.late = seconds(std::atoi(answers.c_str()));
                answers = result;
            }
            const bool one = fault.again || fault.named || answers.empty();
            if (one && code != "number") {
                camera_.faults.push_back(fault);
                return;
            }
        }
        wrong_ = "the model does not know: " + line;
    }

    // The text between quotes, with its escapes.
    static std::string quoted(const std::string& line) {
        const std::size_t end = line.rfind('"');
        std::string text;
        for (std::size_t at = line.find('"') + 1; at < end; ++at) {
            if (line[at] != '\\') {
                text += line[at];
                continue;
            }
            const char escape = line[++at];
            if (escape == 'x') {
                text += static_cast<char>(std::strtol(line.substr(at + 1, 2).c_str(), nullptr, 16));
                at += 2;
            } else {
                text += escape == 'n' ? '\n' : escape == 'r' ? '\r' : escape;
            }
        }
        return text;
    }

    static std::string eight_digits(const std::string& number) {
        char digits[16];
        std::snprintf(digits, sizeof digits, "%08lX", std::strtoul(number.c_str(), nullptr, 0));
        return digits;
    }

    const transcript::Transcript& transcript_;
    Agenda agenda_;
    Camera camera_;
    Press press_;
    File file_;
    std::unique_ptr<Worker> worker_;
    std::vector<std::string> said_;
    std::string wrong_;
    Time began_{};
};

std::string play(const fs::path& path) {
    std::string error;
    const auto transcript = transcript::read_transcript(path, error);
    return transcript ? Playing(*transcript).play() : error;
}

// Names one a line, so that one that the model can no longer play is a failure.
std::vector<std::string> played() {
    std::ifstream list(AFTERNOONS "/played_transcripts.txt");
    std::vector<std::string> names;
    for (std::string name; std::getline(list, name);) {
        if (!name.empty() && name.front() != '#') {
            names.push_back(name);
        }
    }
    return names;
}

TEST(WorkerModel, SaysWhatTheRealWorkerSays) {
    const std::vector<std::string> names = played();
    ASSERT_GE(names.size(), 172U);
    for (const std::string& name : names) {
        EXPECT_EQ(play(fs::path(TRANSCRIPTS) / (name + ".transcript")), "") << name;
    }
}

// Everything that it can play is in the list: a new transcript that it gets right is one more.
TEST(WorkerModel, IsHeldToEveryTranscriptThatItCanPlay) {
    const std::vector<std::string> names = played();
    std::string others;
    for (const auto& entry : fs::recursive_directory_iterator(TRANSCRIPTS)) {
        const std::string name =
            fs::relative(entry.path(), TRANSCRIPTS).replace_extension("").string();
        if (entry.path().extension() == ".transcript" &&
            std::find(names.begin(), names.end(), name) == names.end() &&
            play(entry.path()).empty()) {
            others += name + "\n";
        }
    }
    EXPECT_EQ(others, "") << "these belong into played_transcripts.txt";
}

}  // namespace
}  // namespace afternoons
