// What lies where in a bundle, and every way in which it can be missing or wrong.
#include "tether/doctor/bundle.h"

#include <cerrno>
#include <cstring>
#include <functional>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include "tests/tether/doctor/bundle_fixture.h"
#include "tether/doctor/sdk_library.h"

namespace {

namespace fs = std::filesystem;
using doctor::ProgramFile;

class Bundle : public BundleTest {
  protected:
    std::string worker_finding() const {
        return said(doctor::worker_is_there(bundle(), doctor::read_program_file(worker)));
    }
    std::string sdk_finding() const {
        return said(doctor::sdk_is_there(bundle(), *doctor::read_program_file(worker)));
    }
    std::string adapter_finding(bool simulated) const {
        return said(doctor::adapter_is_there(bundle(), simulated));
    }

    // "Frameworks/SonySDK/libCr_Core.so"
    std::string sdk_name() const {
        return sdk.lexically_relative(contents);
    }
};

TEST_F(Bundle, IsFoundByItsFolderItsContentsOrItsWorker) {
    fs::create_directory_symlink(folder, folder / "link");
    for (const fs::path& path : {folder, contents, worker, folder / "link", contents / ".."}) {
        const doctor::Bundle found = doctor::bundle_at(path);
        EXPECT_EQ(found.contents, contents) << path;
        EXPECT_EQ(found.worker, worker) << path;
    }
    EXPECT_EQ(doctor::bundle_at(folder / "no").worker, folder / "no/Contents/MacOS/sony-worker");
}

TEST_F(Bundle, TheWorkerIsThere) {
    EXPECT_TRUE(worker_finding().starts_with("ok worker: " + worker.string() + ", for "))
        << worker_finding();
}

TEST_F(Bundle, TheWorkerIsMissing) {
    fs::remove(worker);
    EXPECT_EQ(worker_finding(), "FAIL worker: " + worker.string() + " is not there");
    fs::create_directory(worker);
    EXPECT_EQ(worker_finding(), "FAIL worker: " + worker.string() + " is a folder, not a file");
}

TEST_F(Bundle, TheWorkerIsNotExecutable) {
    fs::permissions(worker, fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(worker_finding(), "FAIL worker: " + worker.string() + " is not executable");
}

TEST_F(Bundle, ATextIsNoProgramThatOnlyLacksAPermission) {
    write_script("exit");
    fs::permissions(worker, fs::perms::owner_read | fs::perms::owner_write);
    const doctor::Finding finding =
        doctor::worker_is_there(bundle(), doctor::read_program_file(worker));
    EXPECT_EQ(said(finding), "FAIL worker: " + worker.string() +
                                 " is no program of Linux or macOS, and not executable");
    EXPECT_EQ(finding.advice.find("chmod"), std::string::npos) << finding.advice;
}

TEST_F(Bundle, TheWorkerIsAScript) {
    write_script("exit");
    EXPECT_EQ(worker_finding(), "warn worker: " + worker.string() +
                                    " is no program of Linux or macOS, maybe a script");
}

TEST_F(Bundle, TheRunPathIsRight) {
    const auto program = *doctor::read_program_file(worker);
    EXPECT_EQ(said(doctor::run_path_is_right(program)),
              "ok run path: " + doctor::right_run_path(program.format));
}

TEST_F(Bundle, TheRunPathIsWrong) {
    replace(worker, "/../Frameworks/SonySDK", "/../Frameworks/SonySDX");
    const auto program = *doctor::read_program_file(worker);
    const std::string right = doctor::right_run_path(program.format);
    const std::string wrong = right.substr(0, right.size() - 1) + "X";
    EXPECT_EQ(said(doctor::run_path_is_right(program)),
              "FAIL run path: " + wrong + ", should be " + right);
    EXPECT_EQ(sdk_finding(),
              "FAIL SDK library: Frameworks/SonySDX/" + sdk.filename().string() + " is not there");
}

TEST(RunPath, IsMissingOrOneOfSeveral) {
    const std::string right = "@executable_path/../Frameworks/SonySDK";
    const auto finding = [&](const std::vector<std::string>& first,
                             const std::vector<std::string>& second) {
        return said(doctor::run_path_is_right(
            {ProgramFile::Format::mach_o, {{"arm64", {}, first}, {"x86_64", {}, second}}}));
    };
    EXPECT_EQ(finding({right}, {right}), "ok run path: " + right);
    EXPECT_EQ(finding({right}, {}), "FAIL run path: none, should be " + right);
    EXPECT_EQ(finding({"/opt", right}, {right}),
              "warn run path: /opt, " + right + ", should be " + right);
    EXPECT_EQ(finding({"/opt"}, {right}), "FAIL run path: /opt, should be " + right);
}

TEST_F(Bundle, TheSimulatedSdkIsRecognised) {
    EXPECT_EQ(sdk_finding(), "ok SDK library: " + sdk_name() + ", simulated: the virtual camera");
}

TEST_F(Bundle, TheSimulatedSdkDoesNotBelongIntoAnApplication) {
    const fs::path application = folder / "X.app";
    fs::create_directory(application);
    fs::rename(contents, application / "Contents");
    const doctor::Bundle in_application = doctor::bundle_at(application);
    const auto finding =
        doctor::sdk_is_there(in_application, *doctor::read_program_file(in_application.worker));
    EXPECT_EQ(said(finding), "warn SDK library: " + sdk_name() + ", simulated: the virtual camera");
}

TEST_F(Bundle, TheMakersSdkIsRecognised) {
    take_for_the_makers();
    EXPECT_EQ(sdk_finding(), "ok SDK library: " + sdk_name() + ", the maker's");
}

TEST_F(Bundle, TheSdkIsMissing) {
    fs::remove(sdk);
    EXPECT_EQ(sdk_finding(), "FAIL SDK library: " + sdk_name() + " is not there");
    fs::create_symlink("libCr_Core.so.9", sdk);
    EXPECT_EQ(sdk_finding(), "FAIL SDK library: " + sdk_name() +
                                 " is a link to libCr_Core.so.9, which is not there");
    fs::remove(sdk);
    fs::create_directory(sdk);
    EXPECT_EQ(sdk_finding(), "FAIL SDK library: " + sdk_name() + " is a folder, not a file");
}

TEST_F(Bundle, TheSdkIsForAnotherSystem) {
    const std::string worker_is_for = describe(*doctor::read_program_file(worker));
    write(sdk, "no library at all");
    EXPECT_EQ(sdk_finding(), "FAIL SDK library: " + sdk_name() + " is no library, the worker for " +
                                 worker_is_for);
    // The first bytes of a library for the Mac, on a processor that never was in one.
    write(sdk, std::string("\xCF\xFA\xED\xFE\x07\x00\x00\x00", 8) + std::string(24, '\0'));
    EXPECT_EQ(sdk_finding(), "FAIL SDK library: " + sdk_name() +
                                 " is for macOS on processor 7, the worker for " + worker_is_for);
}

TEST_F(Bundle, TheSdkIsForTheSameProcessorOfAnotherSystem) {
    write(sdk, std::string("\xCF\xFA\xED\xFE\x07\x00\x00\x01", 8) + std::string(24, '\0'));
    const ProgramFile program{ProgramFile::Format::elf,
                              {{"x86_64", {sdk.filename()}, {"$ORIGIN/../Frameworks/SonySDK"}}}};
    EXPECT_EQ(said(doctor::sdk_is_there(bundle(), program)),
              "FAIL SDK library: " + sdk_name() +
                  " is for macOS on x86_64, the worker for Linux on x86_64");
}

TEST_F(Bundle, TheSdkLiesElsewhere) {
    take_for_the_makers();
    const fs::path elsewhere = folder / "elsewhere.dylib";
    fs::rename(sdk, elsewhere);
    auto program = *doctor::read_program_file(worker);
    program.images.front().run_paths = {"/no/such/folder", folder};
    program.images.front().libraries = {"@rpath/libCr_Core.dylib"};
    fs::create_symlink(elsewhere, folder / "libCr_Core.dylib");
    EXPECT_EQ(said(doctor::sdk_is_there(bundle(), program)),
              "warn SDK library: " + (folder / "libCr_Core.dylib").string() +
                  ", the maker's, outside of the bundle");
}

TEST_F(Bundle, TheSdkIsCalledByItsWholePath) {
    auto program = *doctor::read_program_file(worker);
    program.images.front().libraries = {sdk};
    EXPECT_EQ(said(doctor::sdk_is_there(bundle(), program)),
              "warn SDK library: " + sdk.string() + ", wherever the bundle is");
}

TEST_F(Bundle, TheLoaderIsFollowed) {
    struct Case {
        std::string library;
        std::string run_path;
        fs::path found;
    };
    const Case cases[] = {
        {"libCr_Core.so", "$ORIGIN/..", contents / "libCr_Core.so"},
        {"libCr_Core.so.1", "${ORIGIN}/../a", contents / "a/libCr_Core.so.1"},
        {"libCr_Core.so", "/opt/sdk", "/opt/sdk/libCr_Core.so"},
        {"@rpath/libCr_Core.dylib", "@loader_path", contents / "MacOS/libCr_Core.dylib"},
        {"@rpath/b/libCr_Core.dylib", "@executable_path/../a", contents / "a/b/libCr_Core.dylib"},
        {"@executable_path/libCr_Core.dylib", "/opt", contents / "MacOS/libCr_Core.dylib"},
        {"/usr/lib/libCr_Core.dylib", "/opt", "/usr/lib/libCr_Core.dylib"},
    };
    for (const Case& one : cases) {
        EXPECT_EQ(doctor::sdk_library(bundle(), {"arm64", {}, {one.run_path}}, one.library),
                  one.found);
    }
}

TEST_F(Bundle, TheWorkerNamesNoSdk) {
    const ProgramFile program{ProgramFile::Format::elf, {{"arm64", {"libc.so.6"}, {}}}};
    EXPECT_EQ(said(doctor::sdk_is_there(bundle(), program)),
              "warn SDK library: the worker names none");
}

TEST_F(Bundle, EveryProcessorHasItsSdk) {
    auto program = *doctor::read_program_file(worker);
    program.images.push_back(program.images.front());
    program.images.back().processor = "riscv";
    EXPECT_TRUE(said(doctor::sdk_is_there(bundle(), program)).starts_with("FAIL "));
}

TEST_F(Bundle, TheAdapterIsThere) {
    EXPECT_EQ(adapter_finding(true),
              "ok USB adapter: Frameworks/CrAdapter/libCr_PTP_USB.dylib, a stand-in");
    fs::remove(adapter);
    fs::copy_file(WORKER, adapter);
    EXPECT_EQ(adapter_finding(false), "ok USB adapter: Frameworks/CrAdapter/libCr_PTP_USB.dylib");
}

TEST_F(Bundle, TheAdapterIsMissing) {
    EXPECT_EQ(adapter_finding(false),
              "FAIL USB adapter: Frameworks/CrAdapter/libCr_PTP_USB.dylib is no library")
        << "the virtual camera's stand-in helps no real SDK";
    fs::remove(adapter);
    for (const bool simulated : {false, true}) {
        EXPECT_EQ(adapter_finding(simulated),
                  "FAIL USB adapter: Frameworks/CrAdapter/libCr_PTP_USB.dylib is not there");
    }
}

// What is no file, put in the place of one, and what is said about it.
struct Oddity {
    std::string said;
    std::function<void(const fs::path&)> put;
};

const Oddity oddities[] = {
    {"is a named pipe, not a file",
     [](const fs::path& place) {
         ASSERT_EQ(mkfifo(place.c_str(), 0700), 0);
     }},
    {"is a device, not a file",
     [](const fs::path& place) {
         fs::create_symlink("/dev/zero", place);
     }},
    {"is a socket, not a file",
     [](const fs::path& place) {
         const host::Descriptor bound(socket(AF_UNIX, SOCK_STREAM, 0));
         sockaddr_un address{};
         address.sun_family = AF_UNIX;
         place.string().copy(address.sun_path, sizeof address.sun_path - 1);
         ASSERT_EQ(
             bind(bound.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0)
             << strerror(errno);
     }},
    {"is a folder, not a file",
     [](const fs::path& place) {
         fs::create_directory(place);
     }},
    {"is behind links that lead back to themselves",
     [](const fs::path& place) {
         fs::create_symlink(place.filename(), place);
     }},
    {"is a link to nowhere, which is not there",
     [](const fs::path& place) {
         fs::create_symlink("nowhere", place);
     }},
};

TEST_F(Bundle, WhatIsNoFileInThePlaceOfTheWorker) {
    for (const Oddity& oddity : oddities) {
        fs::remove(worker);
        oddity.put(worker);
        EXPECT_EQ(worker_finding(), "FAIL worker: " + worker.string() + " " + oddity.said);
    }
}

TEST_F(Bundle, WhatIsNoFileInThePlaceOfTheSdk) {
    for (const Oddity& oddity : oddities) {
        fs::remove(sdk);
        oddity.put(sdk);
        EXPECT_EQ(sdk_finding(), "FAIL SDK library: " + sdk_name() + " " + oddity.said);
    }
}

TEST_F(Bundle, WhatIsNoFileInThePlaceOfTheAdapter) {
    for (const Oddity& oddity : oddities) {
        for (const bool simulated : {false, true}) {
            fs::remove(adapter);
            oddity.put(adapter);
            EXPECT_EQ(adapter_finding(simulated),
                      "FAIL USB adapter: Frameworks/CrAdapter/libCr_PTP_USB.dylib " + oddity.said);
        }
    }
}

TEST_F(Bundle, WhatMayNotBeReadSaysSo) {
    const ProgramFile program = *doctor::read_program_file(worker);
    fs::remove(sdk);
    write(sdk, "secret");
    for (const fs::path& file : {worker, sdk, adapter}) {
        fs::permissions(file, fs::perms{0111});
    }
    fs::permissions(folder, fs::perms{0711});
    std::vector<std::string> found;
    as_nobody([&] {
        found = {worker_finding(), said(doctor::sdk_is_there(bundle(), program)),
                 adapter_finding(false), adapter_finding(true)};
    });
    const std::string denied = " cannot be read: Permission denied";
    const std::string adapter_denied =
        "FAIL USB adapter: Frameworks/CrAdapter/libCr_PTP_USB.dylib" + denied;
    EXPECT_EQ(found, (std::vector<std::string>{"warn worker: " + worker.string() + denied,
                                               "FAIL SDK library: " + sdk_name() + denied,
                                               adapter_denied, adapter_denied}));
}

TEST_F(Bundle, InAFolderThatMayNotBeEnteredIsNotTakenForTheCurrentOne) {
    fs::permissions(folder, fs::perms{0700});
    std::string found;
    as_nobody([&] { found = worker_finding(); });
    EXPECT_EQ(found, "FAIL worker: " + worker.string() + " cannot be read: Permission denied");
}

TEST_F(Bundle, BehindLinksThatLeadBackIsNotTakenForTheCurrentOne) {
    fs::create_symlink("loop", folder / "loop");
    const doctor::Bundle found = doctor::bundle_at(folder / "loop");
    EXPECT_EQ(said(doctor::worker_is_there(found, doctor::read_program_file(found.worker))),
              "FAIL worker: " + (folder / "loop/Contents/MacOS/sony-worker").string() +
                  " is behind links that lead back to themselves");
}

TEST_F(Bundle, IsAPipe) {
    const fs::path pipe = folder / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const doctor::Bundle found = doctor::bundle_at(pipe);
    EXPECT_EQ(said(doctor::worker_is_there(found, doctor::read_program_file(found.worker))),
              "FAIL worker: " + pipe.string() + " is a named pipe, not a file");
}

TEST_F(Bundle, ANameOfAnyBytesIsShownInOneLine) {
    const fs::path odd = folder / "\xFF\x1B[2J\nb";
    const doctor::Bundle found = doctor::bundle_at(odd);
    EXPECT_EQ(said(doctor::worker_is_there(found, {})),
              "FAIL worker: " + folder.string() +
                  "/\\xFF\\x1B[2J\\x0Ab/Contents/MacOS/sony-worker is not there");
    fs::create_directory(odd);
    fs::rename(contents, odd / "Contents");
    const doctor::Bundle there = doctor::bundle_at(odd);
    EXPECT_TRUE(said(doctor::worker_is_there(there, doctor::read_program_file(there.worker)))
                    .starts_with("ok worker: " + folder.string() + "/\\xFF\\x1B[2J\\x0Ab/"));
    EXPECT_TRUE(said(doctor::sdk_is_there(there, *doctor::read_program_file(there.worker)))
                    .starts_with("ok"));
}

TEST(RunPath, OfAnyLengthIsCut) {
    const std::string finding = said(doctor::run_path_is_right(
        {ProgramFile::Format::mach_o,
         {{"arm64", {}, std::vector<std::string>(256, std::string(4096, 'a'))}}}));
    EXPECT_LT(finding.size(), 5000u);
    EXPECT_TRUE(finding.ends_with("…"));
}

}  // namespace
