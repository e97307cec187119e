// What a store keeps of each picture in memory, over a long run.

#include <malloc.h>

#include "tests/host/pictures/desk.h"
#include "tests/sanitized.h"

namespace {

constexpr std::size_t budget = 200;  // bytes of each picture
constexpr std::size_t measured = 4800;

TEST(Memory, APictureTakesLittleOfItOnceItIsTold) {
    if (sanitized) {
        GTEST_SKIP() << "a sanitizer keeps its own books";
    }
    const TemporaryFolder folder(quick_disk());
    Desk desk(folder.path());
    desk.open();
    const OpenedRun run = desk.open_run();
    const auto bring = [&](int first, int last) {
        for (int number = first; number < last; ++number) {
            const std::string name = "DSC" + std::to_string(10000 + number);
            host::Place how;
            how.pair = "pair-" + name;
            how.shot = number;
            // A folder of thousands would only be slow to list.
            how.name = std::to_string(number / 100) + "/{camera}";
            desk.tell(desk.bring(run, name + ".ARW", sample_raw(), how));
            desk.tell(desk.bring(run, name + ".JPG", sample_jpeg(), how));
        }
    };
    // What is kept of the latest pairs has its full size by then.
    bring(0, 600);
    const std::size_t before = ::mallinfo2().uordblks;
    bring(600, 3000);
    const std::size_t after = ::mallinfo2().uordblks;
    EXPECT_LE(after - std::min(before, after), budget * measured);
    RecordProperty("bytes_a_picture", std::to_string((after - std::min(before, after)) / measured));

    EXPECT_EQ(desk.store().list("", "", 100000).size(), 6000U);
}

}  // namespace
