// A file that is looked into, whatever lies in its place: a pipe, a device, a link that leads
// nowhere.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "host/process/pipe.h"

namespace doctor {

class RegularFile {
  public:
    // Nothing when no regular file can be read there; `why` then goes on after its name: "is a
    // folder, not a file". Never waits for another program.
    static std::optional<RegularFile> open(const std::filesystem::path& file, std::string& why);

    // In bytes, when it was opened.
    std::uint64_t size() const {
        return size_;
    }

    // How many bytes were read: fewer than asked for at the end of the file, and where the disk
    // gives none.
    std::size_t read(std::uint64_t offset, char* bytes, std::size_t count) const;

    // Whether the text stands in the first 256 MB. No library is that large: what is, is not read
    // for minutes.
    bool contains(std::string_view text) const;

  private:
    RegularFile(host::Descriptor file, std::uint64_t size) : file_(std::move(file)), size_(size) {}

    host::Descriptor file_;
    std::uint64_t size_;
};

// What `open` says of the file; empty when it can be read.
std::string why_unreadable(const std::filesystem::path& file);

}  // namespace doctor
