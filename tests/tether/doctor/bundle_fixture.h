// A bundle of a test's own, with the worker and the virtual camera that were built.
#pragma once

#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <string_view>
#include <unistd.h>

#include "tests/temporary_folder.h"
#include "tether/doctor/bundle.h"
#include "tether/doctor/checks.h"

class BundleTest : public testing::Test {
  protected:
    BundleTest() {
        contents = folder / "Contents";
        for (const char* name : {"MacOS", "Frameworks/SonySDK", "Frameworks/CrAdapter"}) {
            std::filesystem::create_directories(contents / name);
        }
        worker = contents / "MacOS/sony-worker";
        sdk = contents / "Frameworks/SonySDK" / std::filesystem::path(SDK_LIBRARY).filename();
        adapter = contents / "Frameworks/CrAdapter/libCr_PTP_USB.dylib";
        std::filesystem::copy_file(WORKER, worker);
        std::filesystem::create_symlink(SDK_LIBRARY, sdk);
        write(adapter, "in the place of one");
    }

    static void write(const std::filesystem::path& file, const std::string& bytes) {
        std::filesystem::remove(file);
        std::ofstream(file, std::ios::binary) << bytes;
    }

    static std::string bytes_of(const std::filesystem::path& file) {
        std::ifstream stream(file, std::ios::binary);
        std::ostringstream bytes;
        bytes << stream.rdbuf();
        return bytes.str();
    }

    void write_script(const std::string& lines) {
        write(worker, "#!/bin/sh\n" + lines);
        std::filesystem::permissions(worker, std::filesystem::perms::owner_all);
    }

    // Puts another text of the same length into a copy of the file.
    static void replace(const std::filesystem::path& file, std::string_view old,
                        std::string_view text) {
        ASSERT_EQ(old.size(), text.size());
        std::string bytes = bytes_of(file);
        const auto permissions = std::filesystem::status(file).permissions();
        std::size_t replaced = 0;
        for (std::size_t at = 0; (at = bytes.find(old, at)) != std::string::npos; ++replaced) {
            bytes.replace(at, old.size(), text);
        }
        ASSERT_GT(replaced, 0u) << old;
        write(file, bytes);
        std::filesystem::permissions(file, permissions);
    }

    // The virtual camera without what it is recognised by.
    void take_for_the_makers() const {
        replace(sdk, "CAMERA_SIM_SCENE", "CAMERA_XXX_SCENE");
    }

    // By somebody who is not allowed everything.
    static void as_nobody(const std::function<void()>& work) {
        constexpr uid_t nobody = 65534;
        const uid_t user = geteuid();
        if (user == 0) {
            ASSERT_EQ(seteuid(nobody), 0);
        }
        work();
        ASSERT_EQ(seteuid(user), 0);
    }

    doctor::Bundle bundle() const {
        return doctor::bundle_at(folder);
    }

    const TemporaryFolder made;
    const std::filesystem::path folder = made.path();
    std::filesystem::path contents;
    std::filesystem::path worker;
    std::filesystem::path sdk;
    std::filesystem::path adapter;
};

// A finding as it is printed, for one comparison: "FAIL run path: none".
inline std::string said(const doctor::Finding& finding) {
    constexpr const char* words[] = {"ok ", "warn ", "FAIL "};
    return words[static_cast<int>(finding.verdict)] + finding.text;
}

inline bool holds(const std::string& text, std::string_view part) {
    return text.find(part) != std::string::npos;
}
