// transcripts: plays transcripts of the protocol against the worker, in parallel, and says which of
// them came true.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <atomic>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <mutex>
#include <stdlib.h>
#include <string>
#include <thread>
#include <vector>

#include "host/process/beside_this_program.h"
#include "tests/worker/runner/playing/performance.h"
#include "tests/worker/runner/playing/report.h"
#include "tests/worker/runner/reading/read_transcript.h"

namespace {

namespace fs = std::filesystem;
using transcript::Transcript;

struct Options {
    std::vector<std::string> paths;
    std::string worker = host::worker_beside_this_program();
    unsigned jobs = 4 * std::max(1u, std::thread::hardware_concurrency());
    unsigned repeat = 1;
    std::string only;
    bool list = false;
};

struct Job {
    std::string name;
    Transcript transcript;
    std::string error;  // when it could not be read
};

std::vector<fs::path> files_of(const fs::path& path) {
    if (!fs::is_directory(path)) {
        return {path};
    }
    std::vector<fs::path> files;
    for (const auto& entry : fs::recursive_directory_iterator(path)) {
        if (entry.path().extension() == ".transcript") {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::vector<Job> read_jobs(const Options& options) {
    std::vector<Job> jobs;
    for (const fs::path path : options.paths) {
        for (const fs::path& file : files_of(path)) {
            Job job;
            job.name = fs::is_directory(path)
                           ? fs::relative(file, path).replace_extension("").string()
                           : file.stem().string();
            if (const auto read = transcript::read_transcript(file, job.error)) {
                job.transcript = *read;
            }
            if (options.only.empty() || job.transcript.slow == (options.only == "slow")) {
                jobs.push_back(std::move(job));
            }
        }
    }
    // The slow ones wait rather than work: begun first, they are done by the time that the others
    // are.
    std::stable_partition(jobs.begin(), jobs.end(),
                          [](const Job& job) { return job.transcript.slow; });
    return jobs;
}

class Tally {
  public:
    void passed(const std::string& text) {
        add(text, passed_);
    }
    void failed(const std::string& text) {
        add(text, failed_);
    }
    int close() const {
        std::printf("%u passed, %u failed, 0 skipped\n", passed_, failed_);
        return failed_ == 0 ? 0 : 1;
    }

  private:
    void add(const std::string& text, unsigned& count) {
        const std::lock_guard lock(mutex_);
        ++count;
        std::fputs(text.c_str(), stdout);
        std::fflush(stdout);
    }

    std::mutex mutex_;
    unsigned passed_ = 0;
    unsigned failed_ = 0;
};

void run(const Job& job, const fs::path& worker, Tally& tally) {
    if (!job.error.empty()) {
        tally.failed("FAILED  " + job.name + "\n    " + job.error + "\n");
        return;
    }
    const auto start = host::Clock::now();
    const auto failure = transcript::perform(job.transcript, worker);
    if (failure) {
        tally.failed(transcript::failed_text(job.name, *failure));
    } else {
        tally.passed(transcript::passed_text(job.name, host::Clock::now() - start));
    }
}

int run_all(const std::vector<Job>& jobs, const Options& options) {
    Tally tally;
    std::atomic<std::size_t> next{0};
    const std::size_t count = jobs.size() * options.repeat;
    std::vector<std::thread> threads;
    for (std::size_t number = 0; number < std::min<std::size_t>(options.jobs, count); ++number) {
        threads.emplace_back([&] {
            for (std::size_t index; (index = next++) < count;) {
                run(jobs[index % jobs.size()], options.worker, tally);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    return tally.close();
}

int list(const std::vector<Job>& jobs) {
    for (const Job& job : jobs) {
        std::printf("%-60s %s%s\n", job.name.c_str(), job.transcript.slow ? "(slow) " : "",
                    job.error.empty() ? job.transcript.purpose.c_str() : job.error.c_str());
    }
    return 0;
}

int carry_out(int argc, char** argv) {
    Options options;
    CLI::App app("Plays transcripts of the line protocol against the camera worker.",
                 "transcripts");
    app.add_option("FILE|FOLDER", options.paths, "Transcripts, or folders of them")
        ->required()
        ->check(CLI::ExistingPath);
    app.add_option("--worker", options.worker, "The worker to play them against")
        ->check(CLI::ExistingFile)
        ->capture_default_str();
    app.add_option("--jobs", options.jobs, "How many at a time")->check(CLI::PositiveNumber);
    app.add_option("--repeat", options.repeat, "How often each")->check(CLI::PositiveNumber);
    app.add_option("--only", options.only, "The slow ones or the quick ones only")
        ->check(CLI::IsMember({"slow", "quick"}));
    app.add_flag("--list", options.list, "Name them instead of playing them");
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& asked) {
        return app.exit(asked);
    } catch (const CLI::ParseError& error) {
        std::fprintf(stderr, "transcripts: %s\n", error.what());
        return 2;
    }
    const std::vector<Job> jobs = read_jobs(options);
    if (jobs.empty()) {
        std::fprintf(stderr, "transcripts: no transcripts there\n");
        return 2;
    }
    if (options.list) {
        return list(jobs);
    }
    if (!fs::exists(options.worker)) {
        std::fprintf(stderr, "transcripts: there is no worker at %s\n", options.worker.c_str());
        return 2;
    }
    // The pictures of whoever runs the tests are not part of any scene.
    unsetenv("CAMERA_SIM_PICTURES");
    return run_all(jobs, options);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return carry_out(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "transcripts: %s\n", error.what());
        return 2;
    }
}
