// The report of a file that has arrived: which reports count, and how the path is made.

#include <cstdint>
#include <gtest/gtest.h>
#include <string>

#include "session/sony_worker.h"

namespace {

constexpr std::uint32_t arrived = 0xFFFFFFFF;

// What the worker writes when the SDK reports the file with this name, or null, and this type.
std::string reported(const std::string& folder, char* name, std::uint32_t type)
    REQUIRES(main_thread) {
    SonyWorker worker;
    worker.download_dir.publish(folder);
    testing::internal::CaptureStdout();
    worker.OnCompleteDownload(name, static_cast<sdk::DownloadType>(type));
    return testing::internal::GetCapturedStdout();
}

TEST(OnCompleteDownload, NamesTheFileAndItsWholePath) {
    main_thread.assume();
    struct File {
        std::string folder;
        std::string name;
        std::string path;
    };
    const File table[] = {
        {"/Users/x/Pictures", "DSC00001.JPG", "/Users/x/Pictures/DSC00001.JPG"},
        {"/Users/x/Pictures", "/tmp/a.ARW", "/tmp/a.ARW"},
        {"", "a.JPG", "/a.JPG"},
        {"", "/a.JPG", "/a.JPG"},
        {"/d/", "a.JPG", "/d//a.JPG"},
        {"/", "a.JPG", "//a.JPG"},
        {"relative", "a.JPG", "relative/a.JPG"},
        {"/d", "a|b.JPG", "/d/a%7Cb.JPG"},
        {"/d", "100%.JPG", "/d/100%25.JPG"},
        {"/d%7C", "%7C.JPG", "/d%257C/%257C.JPG"},
        {"/a|b\n", "c.JPG", "/a%7Cb%0A/c.JPG"},
        {"/d", "a\nb\r.JPG", "/d/a%0Ab%0D.JPG"},
        {"/写真", "Füße — 1.JPG", "/写真/Füße — 1.JPG"},
        {"/d", " ", "/d/ "},
        {"/d", "../a.JPG", "/d/../a.JPG"},
        {"/d", "\xFF\x80", "/d/\xFF\x80"},
    };
    for (const File& row : table) {
        std::string name = row.name;
        EXPECT_EQ(reported(row.folder, name.data(), arrived),
                  "LOG|[SONY] landed " + row.name + "\nDOWNLOADED|" + row.path + "\n");
    }
}

TEST(OnCompleteDownload, IsSilentForEveryOtherType) {
    main_thread.assume();
    char name[] = "a.JPG";
    for (const std::uint32_t type : {0U, 1U, 2U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFEU}) {
        EXPECT_EQ(reported("/d", name, type), "") << type;
    }
}

TEST(OnCompleteDownload, IsSilentWithoutAName) {
    main_thread.assume();
    char empty[] = "";
    EXPECT_EQ(reported("/d", empty, arrived), "");
    EXPECT_EQ(reported("/d", nullptr, arrived), "");
}

}  // namespace
