// A pipe for the worker's output that nobody reads unless asked to.
#pragma once

#include <string>

#include "host/process/pipe.h"
#include "tests/temporary_folder.h"
#include "tests/worker/processes/live_worker.h"

class OutputPipe {
  public:
    OutputPipe();

    // Starts the worker with its standard output in the pipe.
    Plan plan() const;

    // Waits until not even one byte more fits; the second one makes it so.
    void await_full();
    void fill();

    // What came until this text, or until the worker closed the pipe.
    std::string read_until(const std::string& text);
    std::string read_to_end();
    void close();

  private:
    host::Descriptor writing_end() const;
    bool read_some(std::string& bytes);

    const TemporaryFolder folder_;
    const std::string path_ = folder_.path() / "output";
    host::Descriptor read_end_;
};
