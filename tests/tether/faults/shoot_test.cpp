// What a shoot says of everything that can go wrong with the virtual camera, and that it is true.
#include <algorithm>
#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "tests/tether/faults/fault_test.h"

static void PrintTo(const Fact& fact, std::ostream* stream) {
    *stream << fact.scene;
}

namespace {

class ShootFaultTest : public FaultTest, public testing::WithParamInterface<Fact> {
  protected:
    // The folder's files, each with whether the camera has brought it whole.
    std::map<std::string, bool> files() {
        std::map<std::string, bool> all;
        for (const auto& entry : fs::directory_iterator(folder_ / "shots")) {
            const std::string name = entry.path().filename();
            if (!name.starts_with('.')) {
                const std::string bytes = read("shots/" + name);
                all[name] = !name.ends_with(".JPG") || bytes.ends_with("\xFF\xD9");
            }
        }
        return all;
    }
};

std::string with(std::string text, const std::string& part, const std::string& other) {
    for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; at += other.size()) {
        text.replace(at, part.size(), other);
    }
    return text;
}

std::string joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += line + "\n";
    }
    return text;
}

TEST_P(ShootFaultTest, IsSaidAsItIs) {
    const Fact& fact = GetParam();
    if (makes_raw(fact) && !PICTURES_CAN_BE_DRAWN) {
        GTEST_SKIP() << "only the picture module makes RAW files";
    }
    shoot(fact, options_of(fact));
    const std::string ended = status();
    EXPECT_EQ(ended, "status " + std::to_string(fact.status)) << output_;

    const Words words = words_of(output_, folder_ / "shots");
    EXPECT_EQ(words.brought, fact.brought);
    EXPECT_EQ(words.lost, fact.lost);
    std::vector<std::string> said;
    said.reserve(words.said.size());
    for (const std::string& line : words.said) {
        said.push_back(with(with(line, folder_ / "shots", "FOLDER"), folder_, "PLACE"));
    }
    if (fact.in_any_order) {
        std::sort(said.begin(), said.end());
    }
    EXPECT_EQ(joined(said), joined({fact.said.begin(), fact.said.end()})) << output_;

    // Whatever the table says: what lies in the folder is named, and is what it is called.
    const auto there = files();
    EXPECT_EQ(words.pictures.size(), there.size()) << output_;
    bool all_whole = true;
    for (const auto& [name, whole] : there) {
        const auto line = std::find_if(
            words.pictures.begin(), words.pictures.end(),
            [&name = name](const std::string& one) { return one.starts_with(name + " "); });
        ASSERT_NE(line, words.pictures.end()) << name << " is not named in\n" << output_;
        EXPECT_EQ(line->ends_with(", damaged"), !whole) << *line;
        all_whole = all_whole && whole;
    }
    EXPECT_EQ(words.lost == "nothing lost", words.brought.find(" of ") == std::string::npos &&
                                                words.lost.find("shot") == std::string::npos);
    if (ended == "status 0") {
        EXPECT_EQ(words.lost, "nothing lost");
        EXPECT_TRUE(all_whole);
        EXPECT_TRUE(said.empty()) << joined(said);
    } else {
        EXPECT_FALSE(said.empty()) << "it failed and does not say why:\n" << output_;
    }
}

INSTANTIATE_TEST_SUITE_P(Faults, ShootFaultTest, testing::ValuesIn(facts),
                         [](const auto& test) { return test.param.name; });

}  // namespace
