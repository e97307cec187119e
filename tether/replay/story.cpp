#include "tether/replay/story.h"

#include <algorithm>
#include <charconv>
#include <signal.h>
#include <utility>

#include "tether/conversation/record_line.h"

namespace replay {

using tether::RecordLine;

namespace {

// Behind it a worker leaves with status 1.
constexpr std::string_view no_sdk = "ERROR|Sony Camera Remote SDK failed to initialise";

bool holds(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

// The number behind the word; nothing when there is none.
std::optional<int> number_behind(std::string_view text, std::string_view word) {
    const std::size_t at = text.find(word);
    if (at == std::string_view::npos) {
        return std::nullopt;
    }
    text.remove_prefix(at + word.size());
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && number >= 0 && number < 256 ? std::optional(number)
                                                               : std::nullopt;
}

// What a remark says of how the worker ended; unknown when it says nothing of that.
Ending ending_in(const RecordLine& remark) {
    const std::string_view text = remark.text;
    Ending ending;
    ending.at = remark.at;
    if (text == "the worker had to be killed" ||
        holds(text, "the worker was killed with the tap") ||
        text.starts_with("problem worker-hangs")) {
        ending.kind = Ending::Kind::hangs;
    } else if (text == "the worker ended in order") {
        ending.kind = Ending::Kind::status;
    } else if (holds(text, "he worker ended")) {
        const auto status = number_behind(text, "status ");
        const auto killed_by = number_behind(text, "signal ");
        if (status || killed_by) {
            ending.kind = Ending::Kind::status;
            ending.wait_status = killed_by ? *killed_by : *status << 8;
        }
    }
    return ending;
}

class Reader {
  public:
    // False when the line is none of a record.
    bool read(std::string_view text, std::size_t number) {
        const auto line = tether::read_record_line(text);
        if (!line) {
            return false;
        }
        if (line->mark == '#') {
            obey(*line);
        } else {
            add(*line, number);
        }
        return true;
    }

    std::vector<Run> finish() {
        if (!run_.steps.empty() || runs_.empty()) {
            close();
        }
        for (std::size_t index = 1; index + 1 < runs_.size(); ++index) {
            end_as_the_one_before(runs_[index], runs_[index - 1].ending);
        }
        return std::move(runs_);
    }

  private:
    void obey(const RecordLine& remark) {
        const std::string_view text = remark.text;
        const Ending ending = ending_in(remark);
        if (ending.kind == Ending::Kind::hangs) {
            // What it said while it was ended may still come.
            run_.ending = ending;
        } else if (ending.kind == Ending::Kind::status) {
            if (run_.ending.kind == Ending::Kind::unknown) {
                run_.ending = ending;
            }
            close();
        } else if (text == "the host closed the worker's input") {
            run_.steps.push_back({Step::Kind::host_closes, remark.at, {}, true, {}, 0});
        } else if (text == "the worker closed its output") {
            run_.steps.push_back({Step::Kind::worker_closes, remark.at, {}, true, {}, 0});
        } else if (text.starts_with("problem picture-not-there")) {
            tell_fate(text, Fate::missing);
        } else if (text.starts_with("problem picture-damaged")) {
            tell_fate(text, Fate::damaged);
        }
    }

    void add(const RecordLine& line, std::size_t number) {
        // A worker that was replaced without a word of how it ended.
        if (line.mark == '<' && line.text.starts_with("CPP_WORKER|START") && has_begun()) {
            const std::vector<Step> first_words = take_first_words(line.at);
            close();
            run_.steps = first_words;
        }
        const auto kind = line.mark == '>'   ? Step::Kind::host_says
                          : line.mark == '<' ? Step::Kind::worker_says
                                             : Step::Kind::error_says;
        run_.steps.push_back({kind, line.at, line.text, line.whole, Fate::whole, number});
        if (line.mark == '<' && line.text == no_sdk) {
            run_.ending = {Ending::Kind::status, 1 << 8, line.at};
        }
    }

    bool has_begun() const {
        return std::any_of(run_.steps.begin(), run_.steps.end(),
                           [](const Step& step) { return step.kind == Step::Kind::worker_says; });
    }

    // Standard error is a stream of its own: what the next worker writes there may be seen before
    // its first line. Whatever lies nearer to that line than to the last of the worker before.
    std::vector<Step> take_first_words(std::chrono::milliseconds start) {
        const auto is_error = [](const Step& step) {
            return step.kind == Step::Kind::error_says;
        };
        const auto behind =
            std::find_if_not(run_.steps.rbegin(), run_.steps.rend(), is_error).base();
        const auto before = behind == run_.steps.begin() ? start : std::prev(behind)->at;
        const auto first = std::find_if(behind, run_.steps.end(), [&](const Step& step) {
            return start - step.at <= step.at - before;
        });
        std::vector<Step> words(first, run_.steps.end());
        run_.steps.erase(first, run_.steps.end());
        return words;
    }

    // Of the file that the remark names, where it names one; of the last that was reported
    // otherwise.
    void tell_fate(std::string_view remark, Fate fate) {
        const auto is_report = [](const Step& one) {
            return one.text.starts_with("DOWNLOADED|");
        };
        const auto is_named = [&](const Step& one) {
            return is_report(one) && remark.ends_with(one.text.substr(one.text.rfind('/') + 1));
        };
        auto step = std::find_if(run_.steps.rbegin(), run_.steps.rend(), is_named);
        if (step == run_.steps.rend()) {
            step = std::find_if(run_.steps.rbegin(), run_.steps.rend(), is_report);
        }
        if (step != run_.steps.rend()) {
            step->fate = fate;
        }
    }

    // A problem that stands is not told again: of workers that end by themselves one after the
    // other, the first one's end is.
    static void end_as_the_one_before(Run& run, const Ending& before) {
        const bool told_to_leave =
            std::any_of(run.steps.begin(), run.steps.end(), [](const Step& step) {
                return step.kind == Step::Kind::host_says && step.text == "QUIT";
            });
        if (run.ending.kind == Ending::Kind::unknown && !told_to_leave) {
            run.ending = before;
            run.ending.at = run.steps.empty() ? before.at : run.steps.back().at;
        }
    }

    void close() {
        // A remark behind an ending tells it again, and so does what others like it wrote to
        // standard error.
        if (has_begun() || runs_.empty()) {
            runs_.push_back(std::exchange(run_, {}));
        }
        run_ = {};
    }

    std::vector<Run> runs_;
    Run run_;
};

}  // namespace

std::string why_no_heading(std::string_view line) {
    constexpr std::string_view before_format = ", record ";
    const auto heading = tether::read_record_line(line);
    const std::size_t format =
        heading && heading->mark == '#' ? heading->text.rfind(before_format) : std::string::npos;
    if (format == std::string::npos) {
        return "it does not begin as a record does";
    }
    const bool known = heading->text.substr(format + before_format.size()) == "1";
    return known ? "" : "its format is not 1, and no other is known here";
}

std::optional<Story> read_story(std::string_view text, std::string& error) {
    error = why_no_heading(text.substr(0, text.find('\n')));
    if (!error.empty()) {
        return std::nullopt;
    }
    Reader reader;
    std::size_t number = 0;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        ++number;
        if (!reader.read(text.substr(0, end), number)) {
            // Whoever kept the record may have been killed in the middle of a line.
            if (end == text.size()) {
                break;
            }
            error = "line " + std::to_string(number) + " is none of a record";
            return std::nullopt;
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return Story{reader.finish()};
}

}  // namespace replay
