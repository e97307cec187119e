// The pictures of a replay are what their names say.
#include "tether/replay/pictures.h"

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

#include "host/pictures/whole/whole.h"
#include "host/process/pipe.h"
#include "tests/temporary_folder.h"

namespace {

namespace fs = std::filesystem;
using replay::Fate;

class ReplayPictures : public testing::Test {
  protected:
    std::string why_not_whole(const std::string& name) {
        const host::Descriptor file(open((folder_ / name).c_str(), O_RDONLY | O_CLOEXEC));
        return host::pictures::why_not_whole(file.number(), fs::file_size(folder_ / name), name);
    }

    const TemporaryFolder made_;
    const fs::path folder_ = made_.path();
};

TEST_F(ReplayPictures, EachFormatIsWholeAndCutInHalfIsNot) {
    for (const std::string name : {"a.JPG", "b.jpeg", "c.ARW", "d.dng", "e.HIF"}) {
        EXPECT_EQ(replay::make_picture(folder_ / name, Fate::whole), "");
        EXPECT_EQ(why_not_whole(name), "") << name;
        EXPECT_EQ(replay::make_picture(folder_ / ("half " + name), Fate::damaged), "");
        EXPECT_NE(why_not_whole("half " + name), "") << name;
    }
    EXPECT_EQ(replay::make_picture(folder_ / "f.MP4", Fate::whole), "");
    EXPECT_GT(fs::file_size(folder_ / "f.MP4"), 0u);
}

TEST_F(ReplayPictures, AMissingOneIsNotMade) {
    EXPECT_EQ(replay::make_picture(folder_ / "a.JPG", Fate::missing), "");
    EXPECT_FALSE(fs::exists(folder_ / "a.JPG"));
}

TEST_F(ReplayPictures, NothingIsReplaced) {
    std::ofstream(folder_ / "a.JPG") << "mine";
    EXPECT_EQ(replay::make_picture(folder_ / "a.JPG", Fate::whole),
              "cannot make " + (folder_ / "a.JPG").string() + ": File exists");
    std::ifstream stream(folder_ / "a.JPG");
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(stream), {}), "mine");
}

}  // namespace
