#pragma once

#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

// A program with a virtual camera of its own, beside the one of the test. Its standard error is the
// test's unless told otherwise. Killed when this goes.
class OtherProcess {
  public:
    // Shoots into a folder: tests/simulator/shooter.cpp.
    OtherProcess(const std::string& folder, int shots, const std::string& error_file = "");
    ~OtherProcess();
    OtherProcess(const OtherProcess&) = delete;
    OtherProcess& operator=(const OtherProcess&) = delete;

    // The next line of its output; nothing when that has ended.
    std::optional<std::string> line();
    std::vector<std::string> lines_until(const std::string& last);

    void kill();
    // Ends its standard input; the exit status, or minus the signal that ended it.
    int end();

  private:
    pid_t process_ = -1;
    int input_ = -1;
    int output_ = -1;
    std::string received_;
};
