// Reading what programs of both systems say to their loaders.
#include "tether/doctor/program_file.h"

#include <atomic>
#include <functional>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "tests/tether/doctor/bundle_fixture.h"
#include "tether/doctor/regular_file.h"
#include "tether/doctor/sdk_library.h"

namespace {

namespace fs = std::filesystem;

using doctor::Image;
using doctor::ProgramFile;
using doctor::read_program;

// Of `size` bytes, the least significant first.
std::string number(std::uint64_t value, int size) {
    std::string bytes;
    for (int place = 0; place < size; ++place) {
        bytes += static_cast<char>(value & 0xFF);
        value >>= 8;
    }
    return bytes;
}

std::string big_endian(std::uint64_t value) {
    const std::string bytes = number(value, 4);
    return {bytes.rbegin(), bytes.rend()};
}

// A load command whose text begins at its 12th or 24th byte, as the real ones do.
std::string command(std::uint64_t kind, std::size_t text_at, std::string text) {
    text.resize((text.size() / 8 + 1) * 8);
    return number(kind, 4) + number(text_at + text.size(), 4) + number(text_at, 4) +
           std::string(text_at - 12, '\0') + text;
}

constexpr std::uint64_t intel = 0x01000007;
constexpr std::uint64_t arm = 0x0100000C;

std::string mach_o(std::uint64_t processor, const std::vector<std::string>& commands) {
    std::string all;
    for (const std::string& one : commands) {
        all += one;
    }
    return number(0xFEEDFACF, 4) + number(processor, 4) + number(0, 4) + number(2, 4) +
           number(commands.size(), 4) + number(all.size(), 4) + number(0, 8) + all;
}

std::string mac_worker(std::uint64_t processor) {
    return mach_o(processor,
                  {command(0x19, 24, "a segment"), command(0x0C, 24, "@rpath/libA.dylib"),
                   command(0x80000018, 24, "/usr/lib/libB.dylib"),
                   command(0x8000001C, 12, "@executable_path/../Frameworks/SonySDK"),
                   command(0x8000001F, 24, "libC.dylib"), command(0x8000001C, 12, "/opt")});
}

std::string universal(const std::vector<std::string>& files) {
    std::string head = big_endian(0xCAFEBABE) + big_endian(files.size());
    std::string body;
    const std::size_t body_at = 8 + 20 * files.size();
    for (const std::string& file : files) {
        head += big_endian(intel) + big_endian(3) + big_endian(body_at + body.size()) +
                big_endian(file.size()) + big_endian(0);
        body += file;
    }
    return head + body;
}

void expect_mac_worker(const Image& image, const std::string& processor) {
    EXPECT_EQ(image.processor, processor);
    EXPECT_EQ(image.libraries,
              (std::vector<std::string>{"@rpath/libA.dylib", "/usr/lib/libB.dylib", "libC.dylib"}));
    EXPECT_EQ(image.run_paths,
              (std::vector<std::string>{"@executable_path/../Frameworks/SonySDK", "/opt"}));
}

// With a text table that is loaded at another address than its place in the file.
std::string elf(std::uint64_t machine, const std::vector<std::pair<int, std::string>>& entries) {
    constexpr std::uint64_t dynamic_at = 64 + 2 * 56;
    const std::uint64_t texts_at = dynamic_at + 16 * (entries.size() + 2);
    constexpr std::uint64_t loaded_higher_by = 0x10000;
    std::string texts(1, '\0');
    std::string dynamic;
    for (const auto& [tag, text] : entries) {
        dynamic += number(static_cast<std::uint64_t>(tag), 8) + number(texts.size(), 8);
        texts += text + '\0';
    }
    dynamic += number(5, 8) + number(texts_at + loaded_higher_by, 8) + number(0, 16);
    const auto segment = [](std::uint64_t type, std::uint64_t at, std::uint64_t size) {
        return number(type, 4) + number(4, 4) + number(at, 8) + number(at + loaded_higher_by, 8) +
               number(0, 8) + number(size, 8) + number(size, 8) + number(8, 8);
    };
    return std::string("\x7F") + "ELF" + number(0x010102, 12) + number(3, 2) + number(machine, 2) +
           number(1, 4) + number(0, 8) + number(64, 8) + number(0, 8) + number(0, 4) +
           number(64, 2) + number(56, 2) + number(2, 2) + number(0, 6) +
           segment(1, 0, texts_at + texts.size()) + segment(2, dynamic_at, dynamic.size()) +
           dynamic + texts;
}

TEST(ProgramFile, ForLinux) {
    const auto program = read_program(
        elf(183, {{1, "libCr_Core.so"}, {1, "libc.so.6"}, {29, "$ORIGIN/../a:/b"}, {15, "/old"}}));
    ASSERT_TRUE(program);
    EXPECT_EQ(describe(*program), "Linux on arm64");
    EXPECT_EQ(program->images[0].libraries,
              (std::vector<std::string>{"libCr_Core.so", "libc.so.6"}));
    EXPECT_EQ(program->images[0].run_paths, (std::vector<std::string>{"$ORIGIN/../a", "/b"}));
}

TEST(ProgramFile, ForLinuxWithTheOlderRunPath) {
    const auto program = read_program(elf(62, {{15, "/old"}}));
    ASSERT_TRUE(program);
    EXPECT_EQ(describe(*program), "Linux on x86_64");
    EXPECT_EQ(program->images[0].run_paths, std::vector<std::string>{"/old"});
}

TEST(ProgramFile, ForTheMac) {
    const auto program = read_program(mac_worker(arm));
    ASSERT_TRUE(program);
    EXPECT_EQ(describe(*program), "macOS on arm64");
    expect_mac_worker(program->images[0], "arm64");
}

TEST(ProgramFile, ForBothProcessorsOfTheMac) {
    const auto program = read_program(universal({mac_worker(intel), mac_worker(arm)}));
    ASSERT_TRUE(program);
    EXPECT_EQ(describe(*program), "macOS on x86_64 and arm64");
    expect_mac_worker(program->images[0], "x86_64");
    expect_mac_worker(program->images[1], "arm64");
}

TEST(ProgramFile, TheWorkerThatWasBuilt) {
    const auto program = doctor::read_program_file(WORKER);
    ASSERT_TRUE(program);
    ASSERT_EQ(program->images.size(), 1u);
    EXPECT_EQ(program->images[0].run_paths.size(), 1u);
    EXPECT_GE(program->images[0].libraries.size(), 2u);
}

TEST(ProgramFile, EverythingElseIsNone) {
    for (const std::string& bytes :
         {std::string(), std::string("#!/bin/sh\n"), std::string(100, '\xFF'),
          std::string("\x7F") + "ELF" + std::string(100, '\0'),  // neither 32 nor 64 bits
          big_endian(0xCAFEBABE) + big_endian(65) + std::string(2000, '\0'),  // a class of Java
          universal({"no program"})}) {
        EXPECT_FALSE(read_program(bytes)) << bytes.substr(0, 20);
    }
    EXPECT_FALSE(doctor::read_program_file("/no/such/file"));
    EXPECT_FALSE(doctor::read_program_file("/tmp"));
}

TEST(ProgramFile, BillionsOfCommandsWithoutASizeAreNone) {
    std::string bytes = mach_o(arm, {number(0x19, 8)});
    bytes.replace(16, 4, "\xFF\xFF\xFF\xFF");
    const auto program = read_program(bytes);
    ASSERT_TRUE(program);
    EXPECT_TRUE(program->images[0].libraries.empty());
}

// A sanitizer build sees whether any of these reads what is not there.
TEST(ProgramFile, BrokenFilesAreReadAsFarAsTheyGo) {
    for (const std::string& whole :
         {elf(62, {{1, "libCr_Core.so"}, {29, "/b"}}), universal({mac_worker(arm)})}) {
        for (std::size_t size = 0; size < whole.size(); ++size) {
            const auto cut = read_program(std::string_view(whole).substr(0, size));
            EXPECT_TRUE(!cut || cut->images.size() == 1);
        }
        for (std::size_t at = 0; at < whole.size(); ++at) {
            for (const char byte : {'\0', '\x01', '\x7F', '\xFF'}) {
                std::string bent = whole;
                bent[at] = byte;
                const auto program = read_program(bent);
                EXPECT_TRUE(!program || !program->images.empty());
            }
        }
    }
}

// The head of a file for Linux, with this table of segments.
std::string elf_head(std::uint64_t entry_size, std::uint64_t count) {
    return std::string("\x7F") + "ELF" + number(0x010102, 12) + number(3, 2) + number(62, 2) +
           number(1, 4) + number(0, 8) + number(64, 8) + number(0, 12) + number(64, 2) +
           number(entry_size, 2) + number(count, 2) + number(0, 6);
}

std::string segment(std::uint64_t type, std::uint64_t at, std::uint64_t size) {
    return number(type, 4) + number(4, 4) + number(at, 24) + number(size, 8) + number(size, 8) +
           number(8, 8);
}

// Many times more than what is read and kept at most; the old reader took gigabytes.
constexpr rlim_t enough_memory = rlim_t{1} << 30;

// Whether a child that has this much memory and time gets to the end. A sanitizer's shadow is
// larger than any limit on memory.
bool ends_in_a_small_child(const std::function<void()>& work) {
    const pid_t child = fork();
    if (child == 0) {
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
        const rlimit memory{enough_memory, enough_memory};
        setrlimit(RLIMIT_AS, &memory);
#endif
        alarm(20);
        work();
        _exit(0);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return status == 0;
}

bool is_read_in_a_small_child(const std::string& bytes) {
    return ends_in_a_small_child([&] { read_program(bytes); });
}

TEST(HostileProgram, ManyTablesInOnePlaceAreOne) {
    // Every header is the first one again, and that one covers the whole file.
    std::string bytes = elf_head(0, 65535) + segment(2, 120, 1 << 20);
    bytes.resize(1 << 20, '\x01');
    EXPECT_TRUE(is_read_in_a_small_child(bytes));
}

TEST(HostileProgram, ManyHeadersOfOneTableAreOne) {
    std::string bytes = elf_head(56, 65535);
    for (int index = 0; index < 65535; ++index) {
        bytes += segment(2, 64 + 56 * 65535, std::uint64_t{1} << 40);
    }
    bytes.resize(bytes.size() + (1 << 20), '\x01');
    EXPECT_TRUE(is_read_in_a_small_child(bytes));
}

TEST(HostileProgram, ManyLibrariesOfLongNamesAreFew) {
    constexpr std::uint64_t dynamic_at = 64 + 56;
    constexpr std::uint64_t count = 60000;
    const std::uint64_t texts_at = dynamic_at + 16 * (count + 2);
    std::string bytes = elf_head(56, 1) + segment(2, dynamic_at, 16 * (count + 2)) + number(5, 8) +
                        number(texts_at, 8);
    for (std::uint64_t index = 0; index < count; ++index) {
        bytes += number(1, 8) + number(index, 8);
    }
    bytes += number(0, 16) + std::string(1 << 20, 'a');
    EXPECT_TRUE(is_read_in_a_small_child(bytes));
    const auto program = read_program(bytes);
    ASSERT_TRUE(program);
    ASSERT_EQ(program->images[0].libraries.size(), doctor::most_names);
    EXPECT_EQ(program->images[0].libraries[0], std::string(doctor::Bytes::longest_text, 'a'));
}

TEST(HostileProgram, TheTextsEndWhereTheyAreSaidTo) {
    constexpr std::uint64_t dynamic_at = 64 + 56;
    const std::string bytes = elf_head(56, 1) + segment(2, dynamic_at, 64) + number(5, 8) +
                              number(dynamic_at + 64, 8) + number(10, 8) + number(3, 8) +
                              number(1, 8) + number(0, 8) + number(0, 16) + "abcdef";
    const auto program = read_program(bytes);
    ASSERT_TRUE(program);
    EXPECT_EQ(program->images[0].libraries, std::vector<std::string>{"abc"});
}

TEST(HostileProgram, PlacesBeyondTheEndHoldNothing) {
    for (const std::uint64_t place :
         {std::uint64_t{5000}, ~std::uint64_t{0}, ~std::uint64_t{7}, std::uint64_t{1} << 63}) {
        std::string bytes = elf_head(56, 1) + segment(2, place, ~std::uint64_t{0});
        const auto dynamic = read_program(bytes);
        ASSERT_TRUE(dynamic) << place;
        EXPECT_TRUE(dynamic->images[0].libraries.empty()) << place;
        bytes.replace(32, 8, number(place, 8));
        const auto headers = read_program(bytes);
        ASSERT_TRUE(headers) << place;
        EXPECT_TRUE(headers->images[0].libraries.empty()) << place;
    }
}

TEST(HostileProgram, ATextOfTheMacEndsWithItsCommand) {
    std::string one = command(0x0C, 24, "libA");
    one.replace(one.size() - 4, 4, "bcde");
    const auto program = read_program(mach_o(arm, {one, command(0x0C, 24, "libB")}));
    ASSERT_TRUE(program);
    EXPECT_EQ(program->images[0].libraries, (std::vector<std::string>{"libAbcde", "libB"}));
}

TEST(HostileProgram, CommandsWithoutASizeAreTheLast) {
    std::string first = command(0x0C, 24, "libA.dylib");
    first.replace(4, 4, number(0, 4));
    const auto program = read_program(mach_o(arm, {first, command(0x0C, 24, "libB.dylib")}));
    ASSERT_TRUE(program);
    EXPECT_TRUE(program->images[0].libraries.empty());
}

TEST(HostileProgram, CommandsEndWhereTheyAreSaidTo) {
    std::string bytes =
        mach_o(arm, {command(0x0C, 24, "libA.dylib"), command(0x0C, 24, "libB.dylib")});
    bytes.replace(20, 4, number(command(0x0C, 24, "libA.dylib").size(), 4));
    const auto program = read_program(bytes);
    ASSERT_TRUE(program);
    EXPECT_EQ(program->images[0].libraries, std::vector<std::string>{"libA.dylib"});
}

TEST(HostileProgram, MillionsOfCommandsInEveryPartAreFew) {
    // All sixteen parts are the same, with as many commands as there can be.
    std::string commands;
    while (commands.size() < (2u << 20)) {
        commands += command(0x8000001C, 12, "a");
    }
    const std::string part = number(0xFEEDFACF, 4) + number(arm, 4) + number(0, 8) +
                             number(0xFFFFFFFF, 4) + number(0xFFFFFFFF, 4) + number(0, 8) +
                             commands;
    std::string head = big_endian(0xCAFEBABE) + big_endian(16);
    for (int index = 0; index < 16; ++index) {
        head += big_endian(arm) + big_endian(0) + big_endian(328) + big_endian(part.size()) +
                big_endian(0);
    }
    const auto program = read_program(head + part);
    ASSERT_TRUE(program);
    ASSERT_EQ(program->images.size(), 16u);
    for (const Image& image : program->images) {
        EXPECT_EQ(image.run_paths.size(), doctor::most_names);
    }
}

TEST(HostileProgram, AUniversalFileInAUniversalFileIsNone) {
    EXPECT_FALSE(read_program(universal({universal({mac_worker(arm)})})));
    // Each entry leads back to the beginning.
    std::string bytes = big_endian(0xCAFEBABE) + big_endian(16);
    bytes.resize(8 + 16 * 20);
    EXPECT_FALSE(read_program(bytes));
    EXPECT_FALSE(read_program(big_endian(0xCAFEBABE) + big_endian(0xFFFFFFFF) + mac_worker(arm)));
    EXPECT_FALSE(read_program(big_endian(0xCAFEBABE) + big_endian(5000) + std::string(100000, 1)));
}

TEST(HostileProgram, APartEndsWhereItIsSaidTo) {
    std::string bytes = universal({mac_worker(arm)});
    bytes.replace(20, 4, big_endian(40));
    const auto program = read_program(bytes);
    ASSERT_TRUE(program);
    EXPECT_TRUE(program->images[0].libraries.empty());
}

TEST(HostileProgram, OfAnySizeIsReadALittle) {
    // A terabyte, each byte the same, behind heads that lay claim to all of it.
    const std::uint64_t all = std::uint64_t{1} << 40;
    const std::string heads[] = {
        elf_head(56, 65535) + segment(2, 64, all),
        number(0xFEEDFACF, 4) + number(arm, 4) + number(0, 8) + number(0xFFFFFFFF, 8)};
    for (const std::string& head : heads) {
        for (const char filling : {'\x01', '\x05', '\x0C', '\x1D'}) {
            std::uint64_t taken = 0;
            doctor::Window window(all, [&](std::uint64_t at, char* to, std::size_t count) {
                for (std::size_t place = 0; place < count; ++place) {
                    to[place] = at + place < head.size() ? head[at + place] : filling;
                }
                taken += count;
                return count;
            });
            EXPECT_TRUE(read_program(window));
            EXPECT_LT(taken, 8u << 20);
        }
    }
}

class ProgramOnDisk : public BundleTest {};

TEST_F(ProgramOnDisk, APipeIsNotWaitedFor) {
    fs::remove(sdk);
    ASSERT_EQ(mkfifo(sdk.c_str(), 0600), 0);
    EXPECT_TRUE(ends_in_a_small_child([&] { EXPECT_FALSE(doctor::read_program_file(sdk)); }));
    EXPECT_TRUE(ends_in_a_small_child([&] { doctor::is_simulated(sdk); }));
}

TEST_F(ProgramOnDisk, ADeviceIsNotRead) {
    for (const char* device : {"/dev/zero", "/dev/tty"}) {
        EXPECT_TRUE(
            ends_in_a_small_child([&] { EXPECT_FALSE(doctor::read_program_file(device)); }));
        EXPECT_TRUE(ends_in_a_small_child([&] { EXPECT_FALSE(doctor::is_simulated(device)); }));
    }
}

TEST_F(ProgramOnDisk, TwentyGigabytesOfNothingAreNotReadWhole) {
    const std::uint64_t size = std::uint64_t{20} << 30;
    for (const std::string& head :
         {std::string(), elf_head(56, 65535) + segment(2, 64, size),
          number(0xFEEDFACF, 4) + number(arm, 4) + number(0, 8) + number(0xFFFFFFFF, 8)}) {
        write(sdk, head);
        fs::resize_file(sdk, size);
        EXPECT_TRUE(ends_in_a_small_child([&] { doctor::read_program_file(sdk); }));
        EXPECT_TRUE(ends_in_a_small_child([&] { doctor::is_simulated(sdk); }));
    }
}

TEST_F(ProgramOnDisk, TheVirtualCameraIsRecognisedAcrossTheEndOfAPiece) {
    const std::string name = "CAMERA_SIM_SCENE";
    for (std::size_t before = 65536 - name.size() - 1; before <= 65536 + 1; ++before) {
        write(sdk, std::string(before, 'C') + name);
        EXPECT_TRUE(doctor::is_simulated(sdk)) << before;
    }
    write(sdk, std::string(65536, 'x') + name.substr(1));
    EXPECT_FALSE(doctor::is_simulated(sdk));
}

TEST_F(ProgramOnDisk, AFileThatShrinksIsReadAsFarAsItGoes) {
    write(sdk, elf(62, {{1, "libCr_Core.so"}}) + std::string(100000, 'x'));
    std::string why;
    const auto file = doctor::RegularFile::open(sdk, why);
    ASSERT_TRUE(file) << why;
    bool shortened = false;
    doctor::Window window(file->size(), [&](std::uint64_t at, char* to, std::size_t count) {
        if (!std::exchange(shortened, true)) {
            fs::resize_file(sdk, 100);
        }
        return file->read(at, to, count);
    });
    const auto program = read_program(window);
    ASSERT_TRUE(program);
    EXPECT_TRUE(program->images[0].libraries.empty());
    EXPECT_FALSE(file->contains("CAMERA_SIM_SCENE"));
}

TEST_F(ProgramOnDisk, WhatIsPutInItsPlaceMeanwhileIsNeitherWaitedForNorRead) {
    const fs::path pipe = folder / "pipe";
    const fs::path good = folder / "good";
    const fs::path place = folder / "place";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    write(good, "good");
    fs::create_hard_link(good, place);
    EXPECT_TRUE(ends_in_a_small_child([&] {
        std::atomic<bool> done = false;
        std::thread swapper([&] {
            while (!done) {
                for (const fs::path& other : {pipe, good}) {
                    fs::create_hard_link(other, folder / "next");
                    fs::rename(folder / "next", place);
                    fs::remove(folder / "next");  // renaming onto the same file does nothing
                }
            }
        });
        for (int round = 0; round < 20000; ++round) {
            std::string why;
            const auto file = doctor::RegularFile::open(place, why);
            if (file ? file->size() != 4 : why != "is a named pipe, not a file") {
                _exit(1);
            }
        }
        done = true;
        swapper.join();
    }));
}

}  // namespace
