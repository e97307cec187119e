// The folder that pictures go to: opened at the start, and looked at before each shot.
#include "tests/host/brain/stage.h"

namespace host::brain {
namespace {

using Lines = std::vector<std::string>;
using States = std::vector<State>;

TEST(BrainFolder, ThatItIsWaitedForAndThatItIsOpenIsToldToAll) {
    Stage stage;
    stage.disk_answers = false;
    stage.ask(Start{});
    const FolderOpened opened = stage.opened("/elsewhere/shots");
    stage.forget();
    stage.tell(FolderWaitedFor{opened.ticket, {Code::folder_in_use, "in use", {}, {}}});
    EXPECT_EQ(stage.states(), States{State::starting});
    stage.forget();
    stage.answer(opened);
    EXPECT_EQ(stage.states(), States{State::starting});
    EXPECT_EQ(stage.state().folder, "/elsewhere/shots");
    EXPECT_TRUE(stage.problems().empty()) << "how much room it has was not said";
}

TEST(BrainFolder, OneThatIsNotOpenedIsTriedAgainAfterAMinute) {
    Stage stage;
    stage.disk_answers = false;
    const RequestId start = stage.ask(Start{});
    const RequestId configure = stage.ask(type(FileType::raw));
    const Problem why{Code::folder_in_use, "in use", {}, {}};
    const Ticket ticket = stage.asked_of_disk<OpenFolder>().at(0).ticket;
    stage.tell(FolderWaitedFor{ticket, why});
    stage.answer(FolderNotOpened{ticket, why});
    EXPECT_EQ(stage.answer_to<Problem>(start), why);
    EXPECT_EQ(stage.answer_to<SessionState>(configure).state, State::down);
    EXPECT_FALSE(stage.state().waited_for);
    EXPECT_EQ(stage.state().problems, std::vector<Problem>{why});
    stage.after(milliseconds(59'999));
    EXPECT_EQ(stage.asked_of_disk<OpenFolder>().size(), 1U);
    stage.after(milliseconds(1));
    EXPECT_EQ(stage.asked_of_disk<OpenFolder>().size(), 2U);
}

TEST(BrainFolder, OneThatCanBeWrittenToAgainIsNoProblem) {
    ReadyStage stage;
    stage.disk_answers = false;
    for (const bool writable : {false, true}) {
        stage.forget();
        stage.ask(Capture{});
        const Ticket look = stage.asked_of_disk<LookAtFolder>().at(0).ticket;
        stage.answer(FolderLooked{look, true, true, writable, stage.room});
        EXPECT_EQ(stage.stands(Code::folder_not_permitted), !writable);
        EXPECT_EQ(stage.said("CAPTURE"), writable);
    }
}

TEST(BrainFolder, ALookForAShotThatWasCancelledFiresNone) {
    ReadyStage stage;
    stage.disk_answers = false;
    const auto look = [&](std::size_t number) {
        const Ticket ticket = stage.asked_of_disk<LookAtFolder>().at(number).ticket;
        stage.answer(FolderLooked{ticket, true, true, true, stage.room});
    };
    stage.ask(tagged("first"));
    stage.ask(Cancel{"first"});
    look(0);
    EXPECT_EQ(stage.said(), Lines{}) << "there is no shot";
    stage.ask(tagged("second"));
    stage.ask(Cancel{"second"});
    stage.ask(Capture{});
    look(1);
    EXPECT_EQ(stage.said(), Lines{}) << "it is another one's";
    look(2);
    EXPECT_EQ(stage.said(), (Lines{"CAPTURE", "PRIME"}));
}

}  // namespace
}  // namespace host::brain
