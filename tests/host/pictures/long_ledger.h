// A ledger, and the text of one of many pictures.
#pragma once

#include <fcntl.h>
#include <string>
#include <vector>

#include "host/pictures/ledger/entry.h"
#include "host/pictures/ledger/ledger.h"
#include "tests/host/pictures/desk.h"

// An empty ledger in a folder of its own, open.
class OpenLedger : public testing::Test {
  protected:
    OpenLedger() {
        folder_fd_ = host::Descriptor(::open(folder_.path().c_str(), O_RDONLY | O_CLOEXEC));
        EXPECT_EQ(ledger_.open(folder_fd_.number(), "ledger"), 0);
    }
    fs::path path() const {
        return folder_.path() / "ledger";
    }
    void add(const std::string& bytes) {
        std::ofstream(path(), std::ios::app | std::ios::binary) << bytes;
    }

    TemporaryFolder folder_;
    host::Descriptor folder_fd_;
    host::pictures::Ledger ledger_;
};

// Those numbers, each announced, placed and told; in this order.
inline std::string long_ledger(std::uint64_t first, std::uint64_t last) {
    using namespace host::pictures;
    std::string text;
    for (std::uint64_t number = first; number <= last; ++number) {
        Placing placing;
        placing.picture.id = write_id(number);
        placing.picture.pair = "run-1-" + placing.picture.id;
        placing.picture.camera_name = "DSC" + std::to_string(number) + ".JPG";
        placing.picture.path = placing.picture.camera_name;
        placing.run = "run-1";
        placing.from = placing.picture.camera_name;
        text += write_entry(placing) + write_entry(PlacedAs{placing.picture.id}) +
                write_entry(ToldOf{placing.picture.id});
    }
    return text;
}

inline std::vector<std::uint64_t> numbers_of(const std::vector<host::Picture>& pictures) {
    std::vector<std::uint64_t> numbers;
    numbers.reserve(pictures.size());
    for (const host::Picture& picture : pictures) {
        numbers.push_back(host::pictures::read_id(picture.id).value_or(0));
    }
    return numbers;
}
