// The words that a host reads.
#include <gtest/gtest.h>
#include <utility>

#include "host/values/picture.h"
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

}  // namespace
}  // namespace host
