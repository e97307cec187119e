#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/explore/scene.h"
#include "tests/explore/search/findings.h"

namespace explore {

// One line for each scene as its search ends, a failure with its schedule and its story, and the
// sums.
class Report {
  public:
    // `what` was done, in a sentence, stands over it.
    explicit Report(std::string what);

    void add(const Scene& scene, const Findings& findings);
    // Fails with this complaint unless it is met: a search that plays nothing proves nothing.
    void demand(bool met, const std::string& otherwise);
    void close();

    // The same as a table, at the end of a file for the documentation.
    void write(const std::string& path) const;

    int failed() const {
        return failed_;
    }
    const Findings& sum() const {
        return sum_;
    }

  private:
    struct Row {
        const Scene* scene;
        Findings findings;
    };

    // How long it took, and how fast it went.
    std::string figures() const;

    std::string what_;
    std::chrono::steady_clock::time_point begun_ = std::chrono::steady_clock::now();
    double seconds_ = 0;
    std::vector<Row> rows_;
    Findings sum_{};
    int passed_ = 0;
    int failed_ = 0;
};

// "41 days", "3.2 hours", "17 s".
std::string length_of(std::uint64_t milliseconds);

}  // namespace explore
