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
    // Byte for byte: a ledger outlives the version that wrote it.
    const std::string facts =
        R"({"placing":"0123456789abcdef","run":"run-1","from":"DSC%FF.DNG","device":2049,)"
        R"("inode":18446744073709551615,"bytes":4711,"changed":1714567890123456789,)"
        R"("to":"below/DSC%FF.DNG",)";
    const std::string picture =
        R"("tag":"a \"tag\"\n%FF","pair":"run-1-7","kind":"raw","format":"dng",)"
        R"("cameraName":"DSC%FF.DNG","whole":true,"at":"2024-05-01T12:51:30.123Z",)"
        R"("recovered":true})";
    EXPECT_EQ(read_file(path()),
              facts + R"("reserves":true,"written":1714567890123456789,"shot":12,"n":7,)" +
                  R"("afterMs":1234,)" + picture + "\n" + facts + R"("reserves":false,)" + picture +
                  "\n" + R"({"placed":"0123456789abcdef"})" + "\n" +
                  R"({"told":"0123456789abcdef"})" + "\n" + R"({"dropped":"0123456789abcdef"})" +
                  "\n" + R"({"left":"%FF link","run":"run-1"})" + "\n");
}

TEST_F(LedgerFile, EveryKindAndFormatIsReadAsItWasWritten) {
    Placing placing = some_placing();
    placing.number = 1;
    for (const auto kind : {host::Kind::raw, host::Kind::developed, host::Kind::other}) {
        placing.picture.kind = kind;
        EXPECT_EQ(read_entry(write_entry(placing)), LedgerEntry(placing));
    }
    for (const auto format : {host::Format::jpeg, host::Format::heif, host::Format::arw,
                              host::Format::dng, host::Format::other}) {
        placing.picture.format = format;
        EXPECT_EQ(read_entry(write_entry(placing)), LedgerEntry(placing));
    }
}

TEST_F(LedgerFile, AFieldThatIsMissingOrOfAnotherTypeIsEmpty) {
    Placing least;
    least.picture.id = "0123456789abcdef";
    least.picture.path = least.run = least.from = "x";
    EXPECT_EQ(read_entry(R"({"placing":"0123456789abcdef","to":"x","run":"x","from":"x"})"),
              LedgerEntry(least));
    EXPECT_EQ(
        read_entry(R"({"placing":"0123456789abcdef","to":"x","run":"x","from":"x","device":-1,)"
                   R"("inode":"1","bytes":1.5,"changed":null,"reserves":1,"written":true,"n":[],)"
                   R"("shot":"7","afterMs":-5,"tag":7,"pair":null,"kind":"film","format":0,)"
                   R"("cameraName":{},"whole":"true","at":1714567890,"recovered":[true]})"),
        LedgerEntry(least));
}

TEST_F(LedgerFile, AnIdIsSixteenSmallHexadecimalDigits) {
    EXPECT_EQ(write_id(0x0123456789abcdef), "0123456789abcdef");
    EXPECT_EQ(write_id(0), "0000000000000000");
    EXPECT_EQ(read_id("0123456789abcdef"), 0x0123456789abcdefU);
    EXPECT_EQ(read_id("ffffffffffffffff"), std::numeric_limits<std::uint64_t>::max());
    for (const char* other :
         {"", "0123456789abcde", "0123456789abcdef0", "00123456789abcdef", "0123456789ABCDEF",
          "0x23456789abcdef", "0123456789abcdeg", "-123456789abcdef", " 123456789abcdef"}) {
        EXPECT_EQ(read_id(other), std::nullopt) << other;
        for (const char* kind : {"placed", "told", "dropped"}) {
            EXPECT_EQ(read_entry("{\"" + std::string(kind) + "\":\"" + other + "\"}"),
                      std::nullopt);
        }
        Placing placing = some_placing();
        placing.picture.id = other;
        EXPECT_EQ(read_entry(write_entry(placing)), std::nullopt) << other;
    }
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
    const std::string told = "{\"told\":\"0000000000000001\"}\n";
    std::string expected = "{\"placed\":\"0000000000000001\"}\n";
    for (const std::string torn : {"", "{\"told\":\"00000", "x", "\n"}) {
        add(torn);
        Ledger again;
        ASSERT_EQ(again.open(folder_fd_.number(), "ledger"), 0);
        for (int time = 0; time < 2; ++time) {
            EXPECT_EQ(again.append(ToldOf{"0000000000000001"}), 0);
        }
        expected += torn;
        expected += torn.empty() || torn == "\n" ? "" : "\n";
        expected += told + told;
        EXPECT_EQ(read_file(path()), expected);
    }
    EXPECT_EQ(entries().size(), 9U);
    write_file(path(), "x");
    Ledger one_byte;
    ASSERT_EQ(one_byte.open(folder_fd_.number(), "ledger"), 0);
    EXPECT_EQ(one_byte.append(ToldOf{"0000000000000001"}), 0);
    EXPECT_EQ(read_file(path()), "x\n" + told);
}

TEST_F(LedgerFile, ALineHasAtMost64KiB) {
    const auto line = [](char digit, std::size_t size) {
        const std::string text = "{\"told\":\"000000000000000" + std::string(1, digit) + "\"}";
        return text + std::string(size - text.size(), ' ') + "\n";
    };
    constexpr std::size_t longest = 65536;
    // The second one ends with the first reading of that many bytes.
    add(line('1', 100) + line('2', longest - 102) + line('3', longest) + line('4', longest + 1) +
        line('5', 2 * longest) + line('6', longest) + line('7', 200));
    EXPECT_EQ(entries(),
              (std::vector<LedgerEntry>{ToldOf{"0000000000000001"}, ToldOf{"0000000000000002"},
                                        ToldOf{"0000000000000003"}, ToldOf{"0000000000000006"},
                                        ToldOf{"0000000000000007"}}));
}

TEST(LedgerLines, ComeInPiecesOfAnySize) {
    const std::string line = "{\"placed\":\"0000000000000001\"}\n";
    const std::string text = line + "x\n\n" + line + "{\"placed\":";
    for (std::size_t size = 1; size <= text.size(); ++size) {
        std::vector<std::uint64_t> ends;
        const Ledger::EachLine each = [&](const LedgerEntry& entry, std::uint64_t end) {
            EXPECT_EQ(entry, LedgerEntry(PlacedAs{"0000000000000001"}));
            ends.push_back(end);
            return true;
        };
        LedgerLines lines(each);
        for (std::size_t at = 0; at < text.size(); at += size) {
            EXPECT_TRUE(lines.add(std::string_view(text).substr(at, size)));
        }
        EXPECT_EQ(ends, (std::vector<std::uint64_t>{line.size(), 2 * line.size() + 3})) << size;
    }
}

TEST_F(LedgerFile, ALinesEndIsItsPlaceInTheFile) {
    const std::string garbage = "x\n\n";
    const std::string line = "{\"placed\":\"0000000000000001\"}\n";
    const std::string last = "{\"told\":\"0000000000000001\"}\n";
    add(line + garbage + std::string(100000, 'x') + "\n" + line + last);
    const std::uint64_t size = fs::file_size(path());
    using Ends = std::vector<std::uint64_t>;
    const auto ends = [&](std::uint64_t begin, std::size_t most) {
        Ends all;
        EXPECT_EQ(ledger_.read_from(begin,
                                    [&](const LedgerEntry&, std::uint64_t end) {
                                        all.push_back(end);
                                        return all.size() < most;
                                    }),
                  0);
        return all;
    };
    EXPECT_EQ(ends(0, 9), (Ends{line.size(), size - last.size(), size}));
    EXPECT_EQ(ends(0, 2), (Ends{line.size(), size - last.size()}));
    EXPECT_EQ(ends(0, 1), Ends{line.size()});
    EXPECT_EQ(ends(line.size(), 9), (Ends{size - last.size(), size}));
    EXPECT_EQ(ends(size, 9), Ends{});
    int read = 0;
    EXPECT_EQ(ledger_.read([&](const LedgerEntry&) { return ++read < 2; }), 0);
    EXPECT_EQ(read, 2);

    const PlacedAs placed{"0000000000000001"};
    EXPECT_EQ(ledger_.end_of(placed), size - last.size());
    EXPECT_EQ(ledger_.end_of(ToldOf{"0000000000000001"}), size);
    EXPECT_EQ(ledger_.end_of(PlacedAs{"0000000000000002"}), std::nullopt);
    for (const std::uint64_t end : {line.size(), size - last.size()}) {
        EXPECT_TRUE(ledger_.has_before(end, placed));
        EXPECT_FALSE(ledger_.has_before(end - 1, placed));
        EXPECT_FALSE(ledger_.has_before(end + 1, placed));
    }
    EXPECT_FALSE(ledger_.has_before(0, placed));
    write_file(path(), line);
    EXPECT_EQ(ledger_.end_of(placed), line.size());
    write_file(path(), "x" + line);
    EXPECT_EQ(ledger_.end_of(placed), std::nullopt);
    write_file(path(), line + line);
    EXPECT_EQ(ledger_.end_of(placed), 2 * line.size()) << "the latest";
    // Read from behind, any part of it comes first.
    for (const std::string before : {"", "\n\n"}) {
        for (std::size_t part = 0; part <= line.size() + 1; ++part) {
            write_file(path(), before + line + std::string(LedgerLines::longest - part, '\n'));
            EXPECT_EQ(ledger_.end_of(placed), before.size() + line.size()) << part;
        }
    }
}

TEST_F(LedgerFile, ALineWithoutItsLineFeedIsNoLine) {
    add("{\"placed\":\"0000000000000001\"}");
    EXPECT_EQ(entries(), std::vector<LedgerEntry>{});
}

TEST_F(LedgerFile, APathThatLeadsOutOfTheFolderIsGarbage) {
    for (const char* path : {"../x", "/etc/x", "a/../../x", "", "a//b", "./x", "a/.", "..", "a/..",
                             "a/./b", "a/", "/"}) {
        Placing placing = some_placing();
        placing.picture.path = path;
        EXPECT_EQ(read_entry(write_entry(placing)), std::nullopt) << path;
    }
    Placing placing = some_placing();
    placing.picture.path = std::string("a\0b", 3);
    EXPECT_EQ(read_entry(write_entry(placing)), std::nullopt);
    for (const char* path : {".a", "..a", "a..", "a/..b/.c", "..."}) {
        placing.picture.path = path;
        EXPECT_EQ(read_entry(write_entry(placing)), LedgerEntry(placing)) << path;
    }
    for (const char* name : {"..", "a/b", "", "."}) {
        placing = some_placing();
        placing.from = name;
        EXPECT_EQ(read_entry(write_entry(placing)), std::nullopt) << name;
        placing = some_placing();
        placing.run = name;
        EXPECT_EQ(read_entry(write_entry(placing)), std::nullopt) << name;
    }
}

}  // namespace
