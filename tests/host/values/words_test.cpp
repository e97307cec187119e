// The words that a host reads.
#include <gtest/gtest.h>
#include <optional>
#include <utility>

#include "host/values/picture.h"
#include "host/values/problem.h"
#include "host/values/requests.h"
#include "host/values/session_state.h"
#include "host/values/settings.h"
#include "host/values/shot.h"

namespace host {
namespace {

TEST(WordsTest, AShotAndAPictureAreToldInTheWordsOfTheManual) {
    for (const auto& [status, text] :
         {std::pair(ShotStatus::fired, "fired"), std::pair(ShotStatus::complete, "complete"),
          std::pair(ShotStatus::incomplete, "incomplete"), std::pair(ShotStatus::none, "none"),
          std::pair(ShotStatus::refused, "refused")}) {
        EXPECT_EQ(word(status), text);
    }
    for (const auto& [kind, text] :
         {std::pair(Kind::raw, "raw"), std::pair(Kind::developed, "developed"),
          std::pair(Kind::other, "other")}) {
        EXPECT_EQ(word(kind), text);
    }
    for (const auto& [format, text] :
         {std::pair(Format::jpeg, "jpeg"), std::pair(Format::heif, "heif"),
          std::pair(Format::arw, "arw"), std::pair(Format::dng, "dng"),
          std::pair(Format::other, "other")}) {
        EXPECT_EQ(word(format), text);
    }
}

TEST(WordsTest, AStateAndAnEndAreToldInTheWordsOfTheManual) {
    for (const auto& [state, text] :
         {std::pair(State::down, "down"), std::pair(State::starting, "starting"),
          std::pair(State::idle, "idle"), std::pair(State::opening, "opening"),
          std::pair(State::settling, "settling"), std::pair(State::ready, "ready"),
          std::pair(State::lost, "lost"), std::pair(State::closing, "closing"),
          std::pair(State::ending, "ending")}) {
        EXPECT_EQ(word(state), text);
    }
    for (const auto& [end, text] :
         {std::pair(WorkerEnd::quit, "quit"), std::pair(WorkerEnd::input, "input"),
          std::pair(WorkerEnd::sigterm, "sigterm"), std::pair(WorkerEnd::sigkill, "sigkill"),
          std::pair(WorkerEnd::gone, "gone")}) {
        EXPECT_EQ(word(end), text);
    }
}

TEST(WordsTest, ASettingIsToldAndTakenInTheSameWords) {
    for (const auto& [destination, text] :
         {std::pair(SaveDestination::disk, "disk"), std::pair(SaveDestination::card, "card"),
          std::pair(SaveDestination::both, "both")}) {
        EXPECT_EQ(word(destination), text);
        EXPECT_EQ(save_destination_of(text), destination);
    }
    for (const auto& [type, text] :
         {std::pair(FileType::jpeg, "jpeg"), std::pair(FileType::raw, "raw"),
          std::pair(FileType::both, "both"), std::pair(FileType::other, "other")}) {
        EXPECT_EQ(word(type), text);
        EXPECT_EQ(file_type_of(text), type);
    }
    for (const char* text : {"", "DISK", "Raw", "disk "}) {
        EXPECT_EQ(save_destination_of(text), std::nullopt) << text;
        EXPECT_EQ(file_type_of(text), std::nullopt) << text;
    }
}

TEST(WordsTest, AnSdkCodeIsWrittenAsInTheLog) {
    EXPECT_EQ(written_sdk_code(0x8201), "0x00008201");
    EXPECT_EQ(written_sdk_code(0xFFFFFFFF), "0xFFFFFFFF");
}

}  // namespace
}  // namespace host
