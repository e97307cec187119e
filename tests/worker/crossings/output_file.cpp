#include "tests/worker/crossings/output_file.h"

#include <unistd.h>
#include <utility>

OutputFile::OutputFile() : file_(std::tmpfile()) {
    std::fflush(stdout);
    standard_output_ = dup(STDOUT_FILENO);
    dup2(fileno(file_), STDOUT_FILENO);
}

OutputFile::~OutputFile() {
    give_back();
    std::fclose(file_);
}

std::vector<std::string> OutputFile::take() {
    give_back();
    std::fseek(file_, 0, SEEK_SET);
    std::vector<std::string> lines;
    std::string line;
    for (int byte; (byte = std::getc(file_)) != EOF;) {
        if (byte == '\n') {
            lines.push_back(std::exchange(line, {}));
        } else {
            line += static_cast<char>(byte);
        }
    }
    if (!line.empty()) {
        lines.push_back(line + " (unfinished)");
    }
    return lines;
}

void OutputFile::give_back() {
    if (standard_output_ >= 0) {
        std::fflush(stdout);
        dup2(standard_output_, STDOUT_FILENO);
        close(std::exchange(standard_output_, -1));
    }
}
