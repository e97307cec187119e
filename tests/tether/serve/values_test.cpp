#include "tether/serve/values.h"

#include <gtest/gtest.h>

namespace serve {
namespace {

using std::chrono::milliseconds;

host::Picture picture() {
    host::Picture picture;
    picture.id = "p1";
    picture.shot = 7;
    picture.tag = "guest";
    picture.pair = "pair1";
    picture.kind = host::Kind::raw;
    picture.format = host::Format::arw;
    picture.path = "/shots/DSC00001.ARW";
    picture.camera_name = "DSC00001.ARW";
    picture.bytes = 25690112;
    picture.whole = true;
    picture.at = "2026-05-03T14:07:22.731Z";
    picture.after = milliseconds(1214);
    return picture;
}

TEST(Values, APicture) {
    EXPECT_EQ(json(picture()).dump(),
              R"({"id":"p1","shot":7,"tag":"guest","pair":"pair1","kind":"raw","format":"arw",)"
              R"("path":"/shots/DSC00001.ARW","cameraName":"DSC00001.ARW","bytes":25690112,)"
              R"("whole":true,"at":"2026-05-03T14:07:22.731Z","afterMs":1214,"recovered":false})");
}

TEST(Values, AnUnaskedPictureHasNullsAndKeepsEveryField) {
    host::Picture unasked = picture();
    unasked.shot.reset();
    unasked.tag.clear();
    unasked.after.reset();
    unasked.recovered = true;
    EXPECT_EQ(json(unasked).dump(),
              R"({"id":"p1","shot":null,"tag":"","pair":"pair1","kind":"raw","format":"arw",)"
              R"("path":"/shots/DSC00001.ARW","cameraName":"DSC00001.ARW","bytes":25690112,)"
              R"("whole":true,"at":"2026-05-03T14:07:22.731Z","afterMs":null,"recovered":true})");
}

TEST(Values, AProblem) {
    const host::Problem problem{host::Code::camera_error, "It says no.", 0x8402, 3};
    const rpc::Json told = json(problem);
    EXPECT_EQ(told["code"], "camera-error");
    EXPECT_EQ(told["severity"], "error");
    EXPECT_EQ(told["text"], "It says no.");
    EXPECT_FALSE(told["advice"].get<std::string>().empty());
    EXPECT_EQ(told["sdk"], "0x00008402");
    EXPECT_EQ(told["shot"], 3);
    EXPECT_EQ(told.size(), 6U);
}

TEST(Values, AProblemWithoutCodeAndShotHasNulls) {
    const rpc::Json told = json(host::Problem{host::Code::card_missing, "No card.", {}, {}});
    EXPECT_EQ(told["severity"], "warning");
    EXPECT_TRUE(told["sdk"].is_null());
    EXPECT_TRUE(told["shot"].is_null());
}

TEST(Values, EveryProblemHasAnAdvice) {
    for (const host::CodeEntry& entry : host::codes) {
        const rpc::Json told = json(host::Problem{entry.code, "", {}, {}});
        EXPECT_EQ(told["code"], entry.word);
        EXPECT_GT(told["advice"].get<std::string>().size(), 10U) << entry.word;
    }
}

TEST(Values, AnErrorCarriesItsProblem) {
    const rpc::Error failed = error({host::Code::busy, "Too many.", {}, {}});
    EXPECT_EQ(failed.code, -32000);
    EXPECT_EQ(failed.message, "Too many.");
    EXPECT_EQ(failed.data["code"], "busy");
}

TEST(Values, AShot) {
    host::Shot shot;
    shot.number = 7;
    shot.tag = "guest";
    shot.status = host::ShotStatus::complete;
    shot.fired_at = "2026-05-03T14:07:21.482Z";
    shot.pictures = {picture()};
    const rpc::Json told = json(shot);
    EXPECT_EQ(told["shot"], 7);
    EXPECT_EQ(told["tag"], "guest");
    EXPECT_EQ(told["status"], "complete");
    EXPECT_EQ(told["firedAt"], "2026-05-03T14:07:21.482Z");
    EXPECT_EQ(told["pictures"], rpc::Json::array({json(picture())}));
    EXPECT_EQ(told["problems"].dump(), "[]");
}

TEST(Values, AShotThatWasNeverFiredHasNoTime) {
    host::Shot shot;
    shot.number = 1;
    shot.status = host::ShotStatus::refused;
    EXPECT_EQ(json(shot).dump(), R"({"shot":1,"tag":"","status":"refused","firedAt":null,)"
                                 R"("pictures":[],"problems":[]})");
}

TEST(Values, AState) {
    host::SessionState state;
    state.state = host::State::ready;
    state.camera = "MODEL-A";
    state.simulated = true;
    state.folder = "/shots";
    state.save_destination = {host::SaveDestination::both, host::SaveDestination::disk};
    state.file_type = {std::nullopt, host::FileType::other};
    state.restarts = 2;
    state.problems = {{host::Code::card_missing, "No card.", {}, {}}};
    const rpc::Json told = json(state);
    EXPECT_EQ(told["problems"].size(), 1U);
    rpc::Json rest = told;
    rest.erase("problems");
    EXPECT_EQ(rest.dump(),
              R"({"state":"ready","camera":"MODEL-A","simulated":true,)"
              R"("folder":"/shots","saveDestination":{"asked":"both","inForce":"disk"},)"
              R"("fileType":{"asked":null,"inForce":"other"},"restarts":2})");
}

TEST(Values, AStateWithoutSession) {
    const rpc::Json told = json(host::SessionState{});
    EXPECT_EQ(told["state"], "down");
    EXPECT_TRUE(told["camera"].is_null());
    EXPECT_EQ(told["saveDestination"].dump(), R"({"asked":null,"inForce":null})");
}

TEST(Values, TheEnd) {
    EXPECT_EQ(json(host::Ended{host::WorkerEnd::sigkill, 137}).dump(),
              R"({"worker":"sigkill","status":137})");
}

TEST(Values, ALine) {
    const host::WireLine line{host::WireLine::Direction::to_worker, "CAPTURE",
                              std::chrono::microseconds(81277900)};
    EXPECT_EQ(json(line, 12).dump(),
              R"({"direction":">","text":"CAPTURE","atMs":81277,"dropped":12})");
}

// Bytes come from cameras, disks and workers.
TEST(Values, BytesThatAreNoUtf8AreEscapedEverywhere) {
    const std::string bytes =
        "a\xFF"
        "b";
    host::Picture bad = picture();
    bad.id = bad.tag = bad.pair = bad.path = bad.camera_name = bad.at = bytes;
    host::Shot shot;
    shot.tag = shot.fired_at = bytes;
    shot.pictures = {bad};
    shot.problems = {{host::Code::camera_error, bytes, {}, {}}};
    host::SessionState state;
    state.camera = bytes;
    state.folder = bytes;
    state.problems = shot.problems;
    EXPECT_EQ(json(bad)["path"], "a%FFb");
    EXPECT_NO_THROW(json(shot).dump());
    EXPECT_NO_THROW(json(state).dump());
    EXPECT_NO_THROW(
        json(host::WireLine{host::WireLine::Direction::from_worker, bytes, {}}, 0).dump());
    EXPECT_NO_THROW(rpc::Json(error(shot.problems.front()).message).dump());
}

}  // namespace
}  // namespace serve
