#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "bench/measure/bench.h"
#include "bench/measure/statistics.h"
#include "bench/measure/subject.h"

// `tether serve` under measurement, asked as its clients ask it.
class Server : public Subject {
  public:
    Server(const Bench& bench, const std::vector<std::string>& options,
           const Environment& environment);

    // Sends a request without parameters.
    void ask(int id, std::string_view method);
    // Passes over what comes before the answer.
    std::string_view hear_answer(int id);
    // The next notification of that method, whatever stands before it.
    std::string_view hear_of(std::string_view method);

    void initialize();
    void connect();
    // In order; waits for the end.
    void shut_down();
};

// The same on the stand-in for a worker, connected, with files saved to the card: a shot is over
// before what it brings is there. The folders of both are below `folder`.
class ServedStandIn {
  public:
    ServedStandIn(const Bench& bench, const std::filesystem::path& folder,
                  Subject::Environment environment = {});

    // Asks for a shot and hears that it is over.
    void capture();

    // In microseconds of the steady clock, in the order in which the stand-in wrote them.
    Samples stamps() const;

    Server server;

  private:
    const std::filesystem::path stamps_;
};

// A folder on a disk in memory, which takes no time to sync; gone with this object.
class MemoryFolder {
  public:
    MemoryFolder();
    ~MemoryFolder();
    MemoryFolder(const MemoryFolder&) = delete;
    MemoryFolder& operator=(const MemoryFolder&) = delete;

    // Empty where the system has none.
    const std::filesystem::path& path() const {
        return path_;
    }

  private:
    std::filesystem::path path_;
};
