#include "tests/explore/report.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <utility>

namespace explore {

namespace {

std::string result_of(const Findings& findings) {
    std::string text = findings.failed ? "FAILED" : "passed";
    if (findings.faults > 0) {
        text += ", " + std::to_string(findings.faults) + " faults";
    }
    if (findings.pairs > 0) {
        text += ", " + std::to_string(findings.pairs) + " pairs";
    }
    if (findings.pulls > 0) {
        text += ", " + std::to_string(findings.pulls) + " pulls";
    }
    return text;
}

void add_to(Findings& sum, const Findings& findings) {
    sum.runs += findings.runs;
    sum.schedules += findings.schedules;
    sum.simulated_ms += findings.simulated_ms;
    sum.faults += findings.faults;
    sum.pairs += findings.pairs;
    sum.pulls += findings.pulls;
}

void print_row(const char* name, const Findings& findings, const std::string& result) {
    std::printf("%-32s %12" PRIu64 " %12" PRIu64 " %14s  %s\n", name, findings.runs,
                findings.schedules, length_of(findings.simulated_ms).c_str(), result.c_str());
    std::fflush(stdout);
}

}  // namespace

Report::Report(std::string what) : what_(std::move(what)) {
    std::printf("%s\n%-32s %12s %12s %14s  %s\n", what_.c_str(), "scene", "runs", "schedules",
                "simulated", "result");
}

void Report::add(const Scene& scene, const Findings& findings) {
    rows_.push_back({&scene, findings});
    add_to(sum_, findings);
    (findings.failed ? failed_ : passed_) += 1;
    sum_.failed = failed_ > 0;
    print_row(scene.name, findings, result_of(findings));
    if (findings.failed) {
        std::printf("  %s\n%s  again: explore --replay \"%s %s\"\n", findings.complaint,
                    findings.story, scene.name, findings.schedule);
        std::fflush(stdout);
    }
}

void Report::demand(bool met, const std::string& otherwise) {
    (met ? passed_ : failed_) += 1;
    sum_.failed = failed_ > 0;
    if (!met) {
        std::printf("FAILED  %s\n", otherwise.c_str());
    }
}

void Report::close() {
    seconds_ = std::chrono::duration<double>(std::chrono::steady_clock::now() - begun_).count();
    print_row("all", sum_, result_of(sum_) + ", " + figures());
    std::printf("%d passed, %d failed, 0 skipped\n", passed_, failed_);
}

std::string Report::figures() const {
    char text[64];
    std::snprintf(text, sizeof text, "%.0f s, %.0f runs/s", seconds_,
                  static_cast<double>(sum_.runs) / seconds_);
    return text;
}

void Report::write(const std::string& path) const {
    std::FILE* const file = std::fopen(path.c_str(), "a");
    if (file == nullptr) {
        std::perror(path.c_str());
        return;
    }
    std::fprintf(
        file,
        "%s\n\n"
        "| Scene | What it proves | Runs | Different schedules | Simulated time | Result |\n"
        "|---|---|--:|--:|--:|---|\n",
        what_.c_str());
    std::vector<Row> rows = rows_;
    std::sort(rows.begin(), rows.end(), [](const Row& one, const Row& other) {
        return std::string_view(one.scene->name) < other.scene->name;
    });
    for (const Row& row : rows) {
        std::fprintf(
            file, "| `%s` | %s | %" PRIu64 " | %" PRIu64 " | %s | %s |\n", row.scene->name,
            row.scene->proves, row.findings.runs, row.findings.schedules,
            length_of(row.findings.simulated_ms).c_str(),
            row.findings.failed ? row.findings.complaint : result_of(row.findings).c_str());
    }
    std::fprintf(file, "| all | in %s | %" PRIu64 " | %" PRIu64 " | %s | %s |\n\n",
                 figures().c_str(), sum_.runs, sum_.schedules, length_of(sum_.simulated_ms).c_str(),
                 result_of(sum_).c_str());
    std::fclose(file);
}

std::string length_of(std::uint64_t milliseconds) {
    const double seconds = static_cast<double>(milliseconds) / 1000;
    constexpr double hour = 3600;
    constexpr double day = 24 * hour;
    char text[32];
    if (seconds < 2 * hour) {
        std::snprintf(text, sizeof text, "%.0f s", seconds);
    } else if (seconds < 2 * day) {
        std::snprintf(text, sizeof text, "%.1f hours", seconds / hour);
    } else {
        std::snprintf(text, sizeof text, "%.1f days", seconds / day);
    }
    return text;
}

}  // namespace explore
