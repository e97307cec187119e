// What the worker writes to the host, kept in a file until it is looked at. Meanwhile nothing that
// GoogleTest prints can be seen.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

class OutputFile {
  public:
    OutputFile();
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    // Gives standard output back and returns the lines written until now.
    std::vector<std::string> take();

  private:
    void give_back();

    std::FILE* file_;
    int standard_output_;
};
