// The ledger: what is written is read again, whatever stands between.

#include "host/pictures/ledger/ledger.h"

#include <limits>

#include "tests/host/pictures/long_ledger.h"

namespace {

using namespace host::pictures;

Placing some_placing() {
    Placing placing;
    placing.picture = {"0123456789abcdef",
                       12,
                       "a \"tag\"\n\xFF",
                       "run-1-7",
                       host::Kind::raw,
                       host::Format::dng,
                       "below/DSC\xFF.DNG",
                       "DSC\xFF.DNG",
                       4711,
                       true,
                       "2024-05-01T12:51:30.123Z",
                       std::chrono::milliseconds(1234),
                       true};
    placing.run = "run-1";
    placing.from = "DSC\xFF.DNG";
    placing.file = {{2049, std::numeric_limits<std::uint64_t>::max()}, 4711, 1714567890123456789};
    placing.reserves = true;
    placing.written = 1714567890123456789;
    placing.number = 7;
    return placing;
}

class LedgerFile : public OpenLedger {
  protected:
    std::vector<LedgerEntry> entries() const {
        std::vector<LedgerEntry> all;
        ledger_.read([&](const LedgerEntry& entry) {
            all.push_back(entry);
            return true;
        });
        return all;
    }
};

TEST_F(LedgerFile, EveryKindOfLineIsReadAsItWasWritten) {
    Placing plain = some_placing();
    plain.reserves = false;
    plain.written = 0;
    plain.number = 0;
    plain.picture.shot.reset();
    plain.picture.after.reset();
    const std::vector<LedgerEntry> all{some_placing(),
                                       plain,
                                       PlacedAs{"0123456789abcdef"},
                                       ToldOf{"0123456789abcdef"},
                                       Dropped{"0123456789abcdef"},
                                       LeftThere{"run-1", "\xFF link"}};
    for (const LedgerEntry& entry : all) {
        EXPECT_EQ(ledger_.append(entry), 0);
    }
    EXPECT_EQ(entries(), all);
    EXPECT_EQ(read_file(path()).front(), '{');
    EXPECT_EQ(write_entry(plain).find("written"), std::string::npos);
}

TEST_F(LedgerFile, AFieldThatIsMissingIsEmpty) {
    Placing least;
    least.picture.id = "0123456789abcdef";
    least.picture.path = least.run = least.from = "x";
    EXPECT_EQ(read_entry(R"({"placing":"0123456789abcdef","to":"x","run":"x","from":"x"})"),
              LedgerEntry(least));
}

TEST_F(LedgerFile, GarbageIsSkipped) {
    ASSERT_EQ(ledger_.append(PlacedAs{"0000000000000001"}), 0);
    add("garbage\n\n{}\n[1,2]\nnull\n{\"placed\":1}\n{\"placed\":\"x\"}\n" +
        std::string(100, '\0') + "\n" + std::string(200000, 'x') + "\n{\"told\":\n" +
        std::string(30000, '[') + "\n\xFF\xFE\n{\"of a later version\":true}\r\n");
    ASSERT_EQ(ledger_.append(ToldOf{"0000000000000001"}), 0);
    EXPECT_EQ(entries(),
              (std::vector<LedgerEntry>{PlacedAs{"0000000000000001"}, ToldOf{"0000000000000001"}}));
}

TEST_F(LedgerFile, ATornLastLineCostsOnlyItself) {
    ASSERT_EQ(ledger_.append(PlacedAs{"0000000000000001"}), 0);
    add("{\"told\":\"00000");
    Ledger again;
    ASSERT_EQ(again.open(folder_fd_.number(), "ledger"), 0);
    ASSERT_EQ(again.append(PlacedAs{"0000000000000002"}), 0);
    EXPECT_EQ(entries(), (std::vector<LedgerEntry>{PlacedAs{"0000000000000001"},
                                                   PlacedAs{"0000000000000002"}}));
}

TEST_F(LedgerFile, ALineWithoutItsLineFeedIsNoLine) {
    add("{\"placed\":\"0000000000000001\"}");
    EXPECT_EQ(entries(), std::vector<LedgerEntry>{});
}

TEST_F(LedgerFile, APathThatLeadsOutOfTheFolderIsGarbage) {
    for (const char* path : {"../x", "/etc/x", "a/../../x", "", "a//b", "./x", "a/."}) {
        Placing placing = some_placing();
        placing.picture.path = path;
        EXPECT_EQ(read_entry(write_entry(placing)), std::nullopt) << path;
    }
    for (const char* name : {"..", "a/b", "", "."}) {
        Placing placing = some_placing();
        placing.from = name;
        EXPECT_EQ(read_entry(write_entry(placing)), std::nullopt) << name;
        placing = some_placing();
        placing.run = name;
        EXPECT_EQ(read_entry(write_entry(placing)), std::nullopt) << name;
    }
}

}  // namespace
