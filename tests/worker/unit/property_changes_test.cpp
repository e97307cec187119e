// What a report of changed properties asks of the main thread. A camera repeats codes, and sends
// them in any order.

#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <type_traits>
#include <vector>

#include "session/sony_worker.h"
#include "tests/worker/unit/queued_commands.h"

namespace {

using Code = std::remove_cv_t<std::remove_pointer_t<sdk::ChangedCodes>>;
using Lines = std::vector<std::string>;

Lines posted_for(const std::vector<std::uint32_t>& codes, std::size_t count) REQUIRES(main_thread) {
    std::vector<Code> reported;
    reported.reserve(codes.size());
    for (const std::uint32_t code : codes) {
        reported.push_back(static_cast<Code>(code));
    }
    SonyWorker worker;
    worker.OnPropertyChangedCodes(static_cast<sdk::ChangeCount>(count), reported.data());
    return queued_commands();
}

TEST(OnPropertyChangedCodes, PostsEachCheckOnceAndTheCardFirst) {
    main_thread.assume();
    const std::string card = "__CARD_CHECK";
    const std::string file_type = "__FILETYPE_CHECK";
    struct Report {
        std::vector<std::uint32_t> codes;
        Lines posted;
    };
    const Report table[] = {
        {{0x0708}, {card}},
        {{0x070D}, {card}},
        {{0x0106}, {file_type}},
        {{0x0708, 0x070D}, {card}},
        {{0x0708, 0x0708, 0x070D, 0x0708}, {card}},
        {{0x0106, 0x0106}, {file_type}},
        {{0x0106, 0x0708}, {card, file_type}},
        {{0x0708, 0x0106}, {card, file_type}},
        {{0x0106, 0x070D, 0x0106, 0x0708}, {card, file_type}},
        {{0x0001, 0x0119, 0x011A, 0x0507}, {}},
        {{0x0000, 0x0107, 0x0707, 0x0709, 0x070C, 0x070E}, {}},
        {{0x00010708, 0x80000106, 0xFFFF070D, 0xFFFFFFFF}, {}},
        {{0x0001, 0x0002, 0x0003, 0x0004, 0x0005, 0x0106}, {file_type}},
    };
    for (const Report& row : table) {
        EXPECT_EQ(posted_for(row.codes, row.codes.size()), row.posted)
            << testing::PrintToString(row.codes);
    }
}

TEST(OnPropertyChangedCodes, LooksAtNoMoreCodesThanItWasGiven) {
    main_thread.assume();
    EXPECT_EQ(posted_for({0x0001, 0x0708, 0x0106}, 1), Lines());
    EXPECT_EQ(posted_for({0x0708, 0x0106}, 1), Lines({"__CARD_CHECK"}));
}

TEST(OnPropertyChangedCodes, BearsAnEmptyReport) {
    main_thread.assume();
    EXPECT_EQ(posted_for({0x0708}, 0), Lines());
    SonyWorker worker;
    worker.OnPropertyChangedCodes(static_cast<sdk::ChangeCount>(5), nullptr);
    EXPECT_EQ(queued_commands(), Lines());
}

// A later session reads what it needs anyhow; the check itself decides whether there is one.
TEST(OnPropertyChangedCodes, DoesNotAskWhetherTheSessionIsUp) {
    main_thread.assume();
    for (const bool up : {false, true}) {
        SonyWorker worker;
        worker.connected = up;
        Code code = static_cast<Code>(0x0106);
        worker.OnPropertyChangedCodes(static_cast<sdk::ChangeCount>(1), &code);
        EXPECT_EQ(queued_commands(), Lines({"__FILETYPE_CHECK"}));
    }
}

}  // namespace
