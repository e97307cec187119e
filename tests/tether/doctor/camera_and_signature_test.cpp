// The system's own commands, answered for: the signature of a bundle, and who else wants the
// camera.
#include "tests/tether/doctor/bundle_fixture.h"
#include "tether/doctor/checks.h"

namespace {

using doctor::Answer;
using doctor::System;

// Keeps the command, and gives the answer.
System mac(const Answer& answer, std::vector<std::string>& asked) {
    return {true, [&, answer](const std::vector<std::string>& command) {
                asked = command;
                return answer;
            }};
}

std::string signature(const std::string& path, const Answer& answer,
                      std::vector<std::string>& asked) {
    const std::filesystem::path contents = std::filesystem::path(path) / "Contents";
    return said(
        doctor::signature_holds({contents, contents / "MacOS/sony-worker"}, mac(answer, asked)));
}

TEST(Signature, OfAnApplicationHolds) {
    std::vector<std::string> asked;
    EXPECT_EQ(signature("/a/X.app", {0, ""}, asked), "ok signature: valid");
    EXPECT_EQ(asked,
              (std::vector<std::string>{"codesign", "--verify", "--deep", "--strict", "/a/X.app"}));
}

TEST(Signature, OfABuildTreeIsTheWorkersAlone) {
    std::vector<std::string> asked;
    EXPECT_EQ(signature("/a/build", {0, ""}, asked), "ok signature: valid");
    EXPECT_EQ(asked.back(), "/a/build/Contents/MacOS/sony-worker");
}

TEST(Signature, IsBroken) {
    std::vector<std::string> asked;
    EXPECT_EQ(
        signature("/a/X.app",
                  {1, "/a/X.app: a sealed resource is missing or invalid\nfile added\n"}, asked),
        "FAIL signature: /a/X.app: a sealed resource is missing or invalid");
}

TEST(Signature, IsMissing) {
    std::vector<std::string> asked;
    EXPECT_EQ(signature("/a/X.app", {1, "/a/X.app: code object is not signed at all\n"}, asked),
              "warn signature: /a/X.app: code object is not signed at all");
}

TEST(Signature, IsGivenToTheFolderAroundContents) {
    for (const auto& [path, why] : {std::pair("/a/X.app", "not signed at all"),
                                    std::pair("/a/build", "a sealed resource is missing")}) {
        const std::filesystem::path contents = std::filesystem::path(path) / "Contents";
        std::vector<std::string> asked;
        EXPECT_EQ(doctor::signature_holds({contents, contents / "MacOS/sony-worker"},
                                          mac({1, why}, asked))
                      .advice,
                  "Sign it: tools/sign '" + std::string(path) + "' IDENTITY (docs/macos.md).");
    }
}

TEST(Signature, CannotBeVerifiedElsewhere) {
    const System linux_machine{false, [](const auto&) {
                                   ADD_FAILURE() << "there is no codesign here";
                                   return Answer{1, ""};
                               }};
    EXPECT_EQ(said(doctor::signature_holds({"/a/X.app/Contents", "/a"}, linux_machine)),
              "warn signature: not verified, that takes a Mac");
}

std::string camera(const Answer& answer) {
    std::vector<std::string> asked;
    return said(doctor::camera_is_free(mac(answer, asked)));
}

TEST(Camera, IsFree) {
    EXPECT_EQ(camera({0, "/sbin/launchd\n/usr/bin/PhotosAgent \n-zsh\n"}),
              "ok other programs: none that takes cameras for itself");
}

TEST(Camera, IsWantedByOthers) {
    EXPECT_EQ(camera({0,
                      "/sbin/launchd\n/usr/libexec/ptpcamerad\n"
                      "/System/Applications/Image Capture.app/Contents/MacOS/Image Capture  \n"
                      "/usr/libexec/ptpcamerad\n"}),
              "warn other programs: ptpcamerad, Image Capture may hold the camera");
    EXPECT_EQ(camera({0, "systemd\ngvfs-gphoto2-vo\nsony-worker\n"}),
              "warn other programs: gvfs-gphoto2-vo, sony-worker may hold the camera");
}

TEST(Camera, NobodyKnows) {
    EXPECT_EQ(camera({1, "sh: 1: exec: ps: not found\n"}),
              "warn other programs: cannot list them: sh: 1: exec: ps: not found");
}

TEST(System, CommandsAreRunWithBothOutputs) {
    const System system = doctor::this_system();
    const Answer good =
        system.run({"sh", "-c", "echo \"$1\"; echo complaint >&2", "sh", "a 'b' $c"});
    EXPECT_EQ(good.status, 0);
    EXPECT_EQ(good.text, "a 'b' $c\ncomplaint\n");
    EXPECT_NE(system.run({"sh", "-c", "exit 4"}).status, 0);
    EXPECT_EQ(system.run({"cat"}).text, "") << "nobody waits for input";
    const Answer missing = system.run({"no-such-command-anywhere"});
    EXPECT_NE(missing.status, 0);
    EXPECT_TRUE(holds(missing.text, "no-such-command-anywhere")) << missing.text;
}

}  // namespace
