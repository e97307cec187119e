// A worker from nothing to its first session.
#include "tests/host/brain/stage.h"

namespace host::brain {
namespace {

using Lines = std::vector<std::string>;
using States = std::vector<State>;

TEST(BrainStarting, TheFolderIsOpenedAndTheWorkerStartedInARunOfItsOwn) {
    Stage stage;
    const RequestId start = stage.ask(Start{});
    stage.after(milliseconds(1));
    EXPECT_EQ(stage.asked_of_disk<OpenFolder>().at(0).folder, "shots");
    EXPECT_EQ(stage.asked_of_disk<OpenRun>().at(0).folder, "/shots");
    EXPECT_EQ(stage.workers().at(0).staging, "/shots/.incoming/run-1");
    EXPECT_EQ(stage.asked_of_disk<RunBegun>().at(0).process, 4711);
    EXPECT_EQ(stage.said(),
              (Lines{"SET_DOWNLOAD_DIR|/shots/.incoming/run-1", "SET_SAVE_DEST|disk", "PRIME"}));
    EXPECT_EQ(stage.states(), (States{State::starting, State::idle}));
    EXPECT_EQ(stage.answer_to<SessionState>(start).folder, "/shots");
}

TEST(BrainStarting, ConnectGoesFromDownToReadyInTheOrderOfTheContract) {
    Stage stage;
    const RequestId connect = stage.ask(Connect{});
    stage.after(seconds(2));
    EXPECT_EQ(stage.states(), (States{State::starting, State::idle, State::opening, State::settling,
                                      State::ready}));
    const auto state = stage.answer_to<SessionState>(connect);
    EXPECT_EQ(state.camera, "MODEL-A");
    EXPECT_EQ(state.save_destination.in_force, SaveDestination::disk);
    EXPECT_EQ(state.file_type.in_force, FileType::jpeg);
    EXPECT_TRUE(state.problems.empty());
}

}  // namespace
}  // namespace host::brain
