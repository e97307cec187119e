// Which files are all there.

#include "host/pictures/whole/whole.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <tuple>
#include <unistd.h>
#include <vector>

#include "simulator/camera/heif_still.h"
#include "simulator/camera/pictures.h"
#include "tests/host/pictures/whole_file.h"

namespace {

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

TEST_F(Whole, WhatIsMissingOrDamagedIsSaid) {
    const std::string jpeg = sample_jpeg("picture");
    const std::string heif = sample_heif("picture");
    const std::string head = heif.substr(0, heif.find("mdat") - 4);
    // A box whose size stands behind its type.
    const auto large = [&](char size) {
        return head + std::string("\0\0\0\1mdat\0\0\0\0\0\0\0", 15) + size;
    };
    std::string no_frame = jpeg;
    for (std::size_t at = 0; (at = no_frame.find("\xFF\xC0", at)) != std::string::npos;) {
        no_frame[at + 1] = '\xC4';
    }
    for (const auto& [content, name, said] :
         {std::tuple{jpeg.substr(0, jpeg.size() - 1), "a.JPG", "it ends before its picture does"},
          std::tuple{no_frame, "a.JPG", "it ends before its picture"},
          std::tuple{"\xFF\xD8" + jpeg, "a.JPG", "its segments are damaged"},
          std::tuple{"\xFF\xD8xx" + jpeg, "a.JPG", "its segments are damaged"},
          std::tuple{heif.substr(0, heif.size() - 1), "a.MOV", "it ends before its last box does"},
          std::tuple{heif + "12345678", "a.HEIC", "it ends before its last box does"},
          std::tuple{heif + std::string(16, '\0'), "a.HEIF", "its boxes are damaged"},
          std::tuple{large(16), "a.HIF", ""},
          std::tuple{large(15), "a.HIF", "its boxes are damaged"},
          std::tuple{large(17), "a.HIF", "it ends before its last box does"},
          std::tuple{head + std::string("\0\0\0\0mdat", 8), "a.HIF", ""},
          std::tuple{head, "a.HIF", "it ends before its picture"}}) {
        EXPECT_EQ(why(content, name), said) << name;
    }
}

TEST_F(Whole, BoxesAreReadToTheLastOne) {
    const std::string type = box("ftyp", "heic");
    const std::string data = box("mdat", "data");
    const std::string whole = type + box("meta", "") + data;
    std::string most;
    for (int count = 3; count < 4096; ++count) {
        most += box("free", "");
    }
    EXPECT_EQ(why(type + box("moov", "") + data, "a.HIF"), "");
    EXPECT_EQ(why(type + data, "a.HIF"), "it ends before its picture");
    EXPECT_EQ(why(whole + most, "a.HIF"), "");
    // Of 7 bytes; of 8, said behind the type, where 16 have gone by; too few bytes; too many boxes.
    for (const std::string& behind :
         {std::string("\0\0\0\7freely", 10), std::string("\0\0\0\1free\0\0\0\0\0\0\0\x08", 16),
          std::string("123"), std::string("1234567"), most + box("free", "")}) {
        EXPECT_EQ(why(whole + behind, "a.HIF"), "its boxes are damaged") << behind.size();
    }
}

TEST_F(Whole, AMovieNeedsAllItsBoxes) {
    needs_all_of(sample_heif("movie"), "a.MP4");
    EXPECT_EQ(why("notes", "a.XML"), "");
    EXPECT_EQ(why("notes", "a"), "");
}

TEST_F(Whole, AHugeFileOfNothingIsLookedAtInNoTime) {
    const std::string path = folder_.path() / "huge";
    const std::string head = sample_jpeg("picture").substr(0, 30);
    write_file(path, head);
    ASSERT_EQ(::truncate(path.c_str(), off_t{8} << 30), 0);
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    for (const auto& [name, said] : {std::pair{"a.JPG", "it is too large for a JPEG"},
                                     std::pair{"a.ARW", "it does not begin as a RAW does"},
                                     std::pair{"a.HIF", "it does not begin as a HEIF does"}}) {
        EXPECT_EQ(host::pictures::why_not_whole(file, std::uint64_t{8} << 30, name), said);
    }
    ::close(file);
}

TEST_F(Whole, AJpegHasAtMost512Mebibytes) {
    const std::string path = folder_.path() / "large";
    const std::string picture = sample_jpeg("picture");
    const std::uint64_t most = std::uint64_t{512} << 20;
    write_file(path, picture);
    const int file = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(::pwrite(file, "\xFF\xD9", 2, static_cast<off_t>(most - 2)), 2);
    EXPECT_EQ(host::pictures::why_not_whole(file, most, "a.JPG"), "");
    EXPECT_EQ(host::pictures::why_not_whole(file, most + 1, "a.JPG"), "it is too large for a JPEG");
    ::close(file);
}

TEST_F(Whole, AFileThatHasShrunkIsNotWhole) {
    const std::string content = sample_jpeg("picture");
    EXPECT_EQ(why_shrunk(content.substr(0, 40), content.size(), "a.JPG"),
              "its segments are damaged");
}

TEST(Format, AnEndingOfAnyCaseSaysWhatAFileIs) {
    using host::Format;
    using host::pictures::format_of;
    EXPECT_EQ(format_of("DSC00001.jPg"), Format::jpeg);
    EXPECT_EQ(format_of("DSC00001.JPEG"), Format::jpeg);
    EXPECT_EQ(format_of("DSC00001.HIF"), Format::heif);
    EXPECT_EQ(format_of("DSC00001.heif"), Format::heif);
    EXPECT_EQ(format_of("DSC00001.HEIC"), Format::heif);
    EXPECT_EQ(format_of("DSC00001.arw"), Format::arw);
    EXPECT_EQ(format_of("a.b.DNG"), Format::dng);
    EXPECT_EQ(format_of("C0001.MP4"), Format::other);
    EXPECT_EQ(format_of("JPG"), Format::other);
    EXPECT_EQ(format_of(""), Format::other);
}

}  // namespace
