// Reading what programs of both systems say to their loaders.
#include "tether/doctor/program_file.h"

#include <gtest/gtest.h>

namespace {

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

}  // namespace
