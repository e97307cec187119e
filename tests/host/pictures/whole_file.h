// A file that is looked at: is it all there?
#pragma once

#include <cstdint>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

#include "host/pictures/whole/whole.h"
#include "tests/host/pictures/desk.h"

class Whole : public testing::Test {
  protected:
    std::string why(const std::string& content, const std::string& name) {
        return why_shrunk(content, content.size(), name);
    }
    // Of a file that had so many bytes when it was opened.
    std::string why_shrunk(const std::string& content, std::uint64_t size,
                           const std::string& name) {
        write_file(folder_.path() / "file", content);
        const int file = ::open((folder_.path() / "file").c_str(), O_RDONLY | O_CLOEXEC);
        std::string text = host::pictures::why_not_whole(file, size, name);
        ::close(file);
        return text;
    }
    // Not one byte of a file can be missing at its end.
    void needs_all_of(const std::string& content, const std::string& name) {
        ASSERT_EQ(why(content, name), "");
        for (std::size_t bytes = 0; bytes < content.size(); ++bytes) {
            ASSERT_NE(why(content.substr(0, bytes), name), "") << name << ", " << bytes << " bytes";
        }
    }

    TemporaryFolder folder_{quick_disk()};
};
