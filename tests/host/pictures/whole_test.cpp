// Which files are all there.

#include "host/pictures/whole/whole.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "simulator/camera/heif_still.h"
#include "simulator/camera/pictures.h"
#include "tests/host/pictures/desk.h"

namespace {

class Whole : public testing::Test {
  protected:
    std::string why(const std::string& content, const std::string& name) {
        write_file(folder_.path() / "file", content);
        const int file = ::open((folder_.path() / "file").c_str(), O_RDONLY | O_CLOEXEC);
        std::string text = host::pictures::why_not_whole(file, content.size(), name);
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

    TemporaryFolder folder_;
};

TEST_F(Whole, EveryFormatNeedsItsLastByte) {
    needs_all_of(sample_jpeg("picture"), "a.JPG");
    needs_all_of(sample_raw("picture"), "a.ARW");
    needs_all_of(sample_raw("picture"), "a.DNG");
    needs_all_of(sample_heif("picture"), "a.HIF");
}

TEST_F(Whole, APictureOfTheVirtualCameraIsWholeAndHalfOfItIsNot) {
#if !defined(PICTURE_MODULE)
    GTEST_SKIP() << "pictures cannot be drawn";
#else
    void* const module = ::dlopen(PICTURE_MODULE, RTLD_NOW);
    ASSERT_NE(module, nullptr) << ::dlerror();
    for (const auto& [function, name] :
         {std::pair{"camera_sim_draw_jpeg", "a.JPG"}, std::pair{"camera_sim_draw_raw", "a.DNG"}}) {
        const auto draw =
            reinterpret_cast<int (*)(const CameraSimPicture*)>(::dlsym(module, function));
        const std::string path = folder_.path() / name;
        const CameraSimPicture picture{path.c_str(), "MODEL", "1", 1, 1700000000, 640, 426, 1};
        ASSERT_EQ(draw(&picture), 0);
        const std::string content = read_file(path);
        EXPECT_EQ(why(content, name), "");
        EXPECT_NE(why(content.substr(0, content.size() / 2), name), "");
        EXPECT_NE(why(content.substr(0, content.size() - 1), name), "");
    }
#endif
}

TEST_F(Whole, TheHeifOfTheVirtualCameraNeedsItsLastByte) {
    const std::string heif(reinterpret_cast<const char*>(camera_sim::heif_still),
                           sizeof camera_sim::heif_still);
    needs_all_of(heif, "a.HIF");
}

TEST_F(Whole, BytesBehindAJpegAreAllowed) {
    EXPECT_EQ(why(sample_jpeg("picture") + "and more, even \xFF\xD8", "a.JPG"), "");
}

TEST_F(Whole, TheThumbnailsEndIsNotThePicturesEnd) {
    const std::string content = sample_jpeg("picture");
    const std::size_t thumbnail = content.find("\xFF\xD9");
    ASSERT_LT(thumbnail, content.rfind("\xFF\xD9"));
    for (std::size_t bytes = thumbnail + 2; bytes < content.size(); ++bytes) {
        EXPECT_NE(why(content.substr(0, bytes), "a.JPG"), "");
    }
}

TEST_F(Whole, OfALargeJpegOnlyTheHeadAndTheEndAreRead) {
#if !defined(__linux__)
    GTEST_SKIP() << "this system does not say how much was read";
#else
    const auto bytes_read = [] {
        std::ifstream facts("/proc/self/io");
        std::string name;
        std::uint64_t bytes = 0;
        facts >> name >> bytes;
        return name == "rchar:" ? bytes : 0;
    };
    if (bytes_read() == 0) {
        GTEST_SKIP() << "this system does not say how much was read";
    }
    std::string large;
    large.resize(10'000'000, 'x');
    const std::string alone = sample_jpeg(large);
    const std::string followed = sample_jpeg(large, true) + sample_jpeg("preview");
    for (const std::string& content : {alone, followed}) {
        write_file(folder_.path() / "file", content);
        const int file = ::open((folder_.path() / "file").c_str(), O_RDONLY | O_CLOEXEC);
        const std::uint64_t before = bytes_read();
        EXPECT_EQ(host::pictures::why_not_whole(file, content.size(), "a.JPG"), "");
        const std::uint64_t read = bytes_read() - before;
        EXPECT_GT(read, 1000U) << "what is read is seen here";
        EXPECT_LT(read, 200'000U);
        ::close(file);
    }
#endif
}

TEST_F(Whole, AnIndexOfPicturesSaysWhereTheFirstOneEnds) {
    const std::string first = sample_jpeg("picture", true);
    const std::string preview = sample_jpeg("preview");
    EXPECT_EQ(why(first + preview, "a.JPG"), "");
    EXPECT_EQ(why(first + preview.substr(0, 5), "a.JPG"), "") << "bytes behind it are allowed";
    for (std::size_t bytes = 0; bytes < first.size(); ++bytes) {
        ASSERT_NE(why(first.substr(0, bytes), "a.JPG"), "") << bytes << " bytes";
    }
    const std::size_t inside = first.find("picture");
    EXPECT_NE(why(first.substr(0, inside) + preview, "a.JPG"), "")
        << "the preview's end is not the picture's";
}

TEST_F(Whole, AnIndexOfPicturesThatIsDamagedIsNotBelieved) {
    const std::string content = sample_jpeg("picture", true);
    const std::size_t index = content.find(std::string("MPF\0", 4));
    ASSERT_NE(index, std::string::npos);
    for (std::size_t at = index; at < index + 50; ++at) {
        for (const char byte : {'\x00', '\x7F', '\xFF'}) {
            std::string damaged = content;
            damaged[at] = byte;
            EXPECT_EQ(why(damaged, "a.JPG"), "") << at;
            EXPECT_NE(why(damaged.substr(0, content.size() - 1), "a.JPG"), "") << at;
        }
    }
}

TEST_F(Whole, AJpegWithoutAPictureInItIsNotWhole) {
    EXPECT_EQ(why("\xFF\xD8\xFF\xD9", "a.JPG"), "it ends before its picture");
}

TEST_F(Whole, ATailOfZerosIsNotAPicture) {
    const std::string content = sample_jpeg("picture");
    const std::size_t middle = content.find("picture");
    EXPECT_NE(why(content.substr(0, middle) + std::string(100000, '\0'), "a.JPG"), "");
    const std::string heif = sample_heif("picture");
    EXPECT_NE(why(heif + std::string(16, '\0') + "x", "a.HIF"), "");
}

TEST_F(Whole, ContentOfAnotherFormatIsNotWhole) {
    EXPECT_EQ(why(sample_jpeg(), "a.ARW"), "it does not begin as a RAW does");
    EXPECT_EQ(why(sample_raw(), "a.JPG"), "it does not begin as a JPEG does");
    EXPECT_EQ(why(sample_raw(), "a.HIF"), "it does not begin as a HEIF does");
}

TEST_F(Whole, AMovieNeedsAllItsBoxes) {
    needs_all_of(sample_heif("movie"), "a.MP4");
    EXPECT_EQ(why("notes", "a.XML"), "");
}

TEST_F(Whole, DirectoriesThatNameEachOtherAreReadOnce) {
    std::string content = sample_raw("picture");
    // The second directory's next one is the first.
    const std::size_t entry = 12;
    const std::size_t second = 8 + 2 + 5 * entry + 4;
    content[second + 2 + 2 * entry] = 8;
    EXPECT_EQ(why(content, "a.ARW"), "");
}

TEST_F(Whole, AHugeFileOfNothingIsLookedAtInNoTime) {
    const std::string path = folder_.path() / "huge";
    const std::string head = sample_jpeg("picture").substr(0, 30);
    write_file(path, head);
    ASSERT_EQ(::truncate(path.c_str(), off_t{8} << 30), 0);
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    for (const char* name : {"a.JPG", "a.ARW", "a.HIF"}) {
        EXPECT_NE(host::pictures::why_not_whole(file, std::uint64_t{8} << 30, name), "");
    }
    ::close(file);
}

TEST_F(Whole, AFileThatHasShrunkIsNotWhole) {
    write_file(folder_.path() / "file", sample_jpeg("picture").substr(0, 40));
    const int file = ::open((folder_.path() / "file").c_str(), O_RDONLY | O_CLOEXEC);
    EXPECT_NE(host::pictures::why_not_whole(file, sample_jpeg("picture").size(), "a.JPG"), "");
    ::close(file);
}

TEST(Format, AnEndingOfAnyCaseSaysWhatAFileIs) {
    using host::Format;
    using host::pictures::format_of;
    EXPECT_EQ(format_of("DSC00001.jPg"), Format::jpeg);
    EXPECT_EQ(format_of("DSC00001.JPEG"), Format::jpeg);
    EXPECT_EQ(format_of("DSC00001.HIF"), Format::heif);
    EXPECT_EQ(format_of("DSC00001.arw"), Format::arw);
    EXPECT_EQ(format_of("a.b.DNG"), Format::dng);
    EXPECT_EQ(format_of("C0001.MP4"), Format::other);
    EXPECT_EQ(format_of("JPG"), Format::other);
    EXPECT_EQ(format_of(""), Format::other);
}

}  // namespace
