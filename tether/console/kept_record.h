// The record of the session, to be downloaded while it goes on: a file that has no name any more,
// or the one that the user wanted.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <thread>

#include "host/process/pipe.h"

namespace console {

class KeptRecord {
  public:
    static constexpr std::size_t usual_bytes = std::size_t{64} << 20;

    // `wanted`: the file that is recorded to anyway, or empty. It must not exist then, or be empty.
    explicit KeptRecord(std::string wanted, std::size_t most_bytes = usual_bytes);
    // Whoever writes must have ended.
    ~KeptRecord();
    KeptRecord(const KeptRecord&) = delete;
    KeptRecord& operator=(const KeptRecord&) = delete;

    // Where the session is to write it; empty when no file could be made.
    const std::string& path() const {
        return path_;
    }

    // Gives what is written by now in pieces, one after the other, and then nothing. From any
    // thread.
    std::function<std::optional<std::string>(std::size_t)> pieces(bool redact) const;

  private:
    void keep();

    std::string path_;
    const std::size_t most_bytes_;
    host::Descriptor file_;
    host::Pipe pipe_;  // between the session and the file
    std::thread thread_;
};

}  // namespace console
