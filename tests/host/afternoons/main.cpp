// afternoons: plays drawn afternoons to the brain, or those that were kept, and holds it to what is
// promised of it.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tests/host/afternoons/afternoon.h"
#include "tests/host/afternoons/drawing.h"
#include "tests/host/afternoons/shortening.h"

namespace {

using afternoons::Outcome;
using afternoons::Story;

struct Options {
    std::uint64_t first = 1;
    std::uint64_t count = 100'000;
    unsigned int jobs = std::max(1U, std::thread::hardware_concurrency());
    std::vector<std::string> kept;
    std::uint64_t tell = 0;
    std::string keep;
    bool long_form = false;
    bool as_drawn = false;
    bool survey = false;
};

void tell(const Story& story, const Outcome& outcome) {
    std::printf("%s", to_text(story).c_str());
    for (const std::string& line : play(story, true).told) {
        std::printf("    %s\n", line.c_str());
    }
    if (outcome.failure) {
        std::printf("%s: %s\n", outcome.failure->guarantee.c_str(), outcome.failure->text.c_str());
    }
}

class Search {
  public:
    explicit Search(const Options& options) : options_(options), next_(options.first) {}

    bool run() {
        std::vector<std::thread> threads;
        threads.reserve(options_.jobs);
        for (unsigned int job = 0; job < options_.jobs; ++job) {
            threads.emplace_back([this] { work(); });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        for (const auto& [kind, seen] : seen_) {
            std::printf("%zu times, such as in %llu: %s\n", seen.times,
                        static_cast<unsigned long long>(seen.seed), kind.c_str());
            failed_ = true;
        }
        if (!failed_) {
            failed_ = !tell_what_was_drawn();
        }
        if (!failed_) {
            std::printf("%llu afternoons, %llu pictures, %llu shots complete, %llu calls\n",
                        static_cast<unsigned long long>(played_),
                        static_cast<unsigned long long>(pictures_),
                        static_cast<unsigned long long>(complete_),
                        static_cast<unsigned long long>(calls_));
            std::printf("%llu passed, 0 failed, 0 skipped\n",
                        static_cast<unsigned long long>(played_));
        }
        return !failed_;
    }

  private:
    void work() {
        for (std::uint64_t seed; !failed_ && (seed = next_++) < options_.first + options_.count;) {
            const Story story = afternoons::draw(seed);
            const Outcome outcome = play(story);
            ++played_;
            for (const afternoons::Event& event : story.events) {
                ++drawn_[static_cast<std::size_t>(event.what)]
                        [static_cast<std::size_t>(event.number)];
            }
            pictures_ += outcome.pictures;
            complete_ += outcome.complete;
            calls_ += outcome.calls;
            if (outcome.failure && options_.survey) {
                enter(seed, story, *outcome.failure);
            } else if (outcome.failure && !failed_.exchange(true)) {
                report(seed, story, outcome);
            }
        }
    }

    // Everything that can happen, in each of its forms, has to: what was never drawn was not
    // proven.
    bool tell_what_was_drawn() const {
        bool all = true;
        std::string text;
        for (const afternoons::Word& word : afternoons::words()) {
            std::uint64_t times = 0;
            for (int number = 0; number < std::max(1, word.numbers); ++number) {
                const std::uint64_t of_form =
                    drawn_[static_cast<std::size_t>(word.what)][static_cast<std::size_t>(number)];
                times += of_form;
                if (of_form == 0 && played_ >= 100'000) {
                    std::printf("FAILED  never drawn: %s %d\n", std::string(word.word).c_str(),
                                number);
                    all = false;
                }
            }
            text +=
                (text.empty() ? "" : ", ") + std::string(word.word) + " " + std::to_string(times);
        }
        std::printf("drawn: %s\n", text.c_str());
        return all;
    }

    // What is said without the numbers in it is one mistake, most likely.
    void enter(std::uint64_t seed, const Story& story, const afternoons::Failure& failure) {
        std::string kind = failure.guarantee + ": " + failure.text;
        kind.erase(std::remove_if(kind.begin() + 3, kind.end(),
                                  [](char byte) { return byte >= '0' && byte <= '9'; }),
                   kind.end());
        const std::lock_guard lock(mutex_);
        Seen& seen = seen_[kind];
        if (seen.times++ == 0 || story.events.size() < seen.events) {
            seen.events = story.events.size();
            seen.seed = seed;
        }
    }

    void report(std::uint64_t seed, const Story& story, const Outcome& outcome) {
        std::printf("FAILED  afternoon %llu after %llu: %s: %s\n",
                    static_cast<unsigned long long>(seed), static_cast<unsigned long long>(played_),
                    outcome.failure->guarantee.c_str(), outcome.failure->text.c_str());
        if (options_.as_drawn) {
            return;
        }
        const Story shortest = afternoons::shorten(story, outcome.failure->guarantee);
        const Outcome again = play(shortest);
        tell(shortest, again);
        if (!options_.keep.empty()) {
            std::ofstream file(options_.keep);
            file << "# " << again.failure->guarantee << ": " << again.failure->text << "\n"
                 << to_text(shortest);
        }
    }

    struct Seen {
        std::size_t times = 0;
        std::size_t events = 0;  // of the shortest story
        std::uint64_t seed = 0;
    };

    const Options& options_;
    std::mutex mutex_;
    std::map<std::string, Seen> seen_;
    std::atomic<std::uint64_t> next_;
    static constexpr std::size_t most_kinds = 128;
    static constexpr std::size_t most_forms = 16;
    std::array<std::array<std::atomic<std::uint64_t>, most_forms>, most_kinds> drawn_{};
    std::atomic<std::uint64_t> played_{0};
    std::atomic<std::uint64_t> pictures_{0};
    std::atomic<std::uint64_t> complete_{0};
    std::atomic<std::uint64_t> calls_{0};
    std::atomic<bool> failed_{false};
};

int replay(const std::vector<std::string>& paths) {
    int passed = 0;
    int failed = 0;
    std::vector<std::filesystem::path> files;
    for (const std::string& path : paths) {
        if (std::filesystem::is_directory(path)) {
            for (const auto& entry : std::filesystem::directory_iterator(path)) {
                files.push_back(entry.path());
            }
        } else {
            files.emplace_back(path);
        }
    }
    for (const auto& path : files) {
        std::ifstream file(path);
        std::string why = "it cannot be opened";
        const auto story = file ? afternoons::read_story(file, why) : std::nullopt;
        if (!story) {
            std::printf("FAILED  %s: %s\n", path.c_str(), why.c_str());
            ++failed;
            continue;
        }
        const Outcome outcome = play(*story);
        if (!outcome.failure) {
            ++passed;
            continue;
        }
        ++failed;
        std::printf("FAILED  %s\n", path.c_str());
        tell(*story, outcome);
    }
    std::printf("%d passed, %d failed, 0 skipped\n", passed, failed);
    return failed == 0 && passed > 0 ? 0 : 1;
}

}  // namespace

int main(int count, char** arguments) try {
    CLI::App app("Plays drawn afternoons to the brain of the host's side.");
    Options options;
    app.add_option("--first", options.first, "The number of the first afternoon");
    app.add_option("--count", options.count, "How many afternoons");
    app.add_option("--jobs", options.jobs, "How many at a time");
    app.add_option("--replay", options.kept, "Stories that were kept, files or folders");
    app.add_option("--tell", options.tell, "Tell this one afternoon, whatever comes of it");
    app.add_option("--keep", options.keep, "Where the shortest story of a failure is written");
    app.add_flag("--long", options.long_form, "Two million afternoons");
    app.add_flag("--survey", options.survey,
                 "Play all of them, and say how often each kind of failure was seen");
    app.add_flag("--as-drawn", options.as_drawn, "Say only which one fails, and shorten nothing");
    CLI11_PARSE(app, count, arguments);
    if (options.long_form) {
        options.count = 2'000'000;
    }
    if (options.tell != 0) {
        const Story story = afternoons::draw(options.tell);
        const Outcome outcome = play(story);
        tell(story, outcome);
        return outcome.failure ? 1 : 0;
    }
    if (!options.kept.empty()) {
        return replay(options.kept);
    }
    return Search(options).run() ? 0 : 1;
} catch (const std::exception& problem) {
    std::fprintf(stderr, "%s\n", problem.what());
    return 2;
}
