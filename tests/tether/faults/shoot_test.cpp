// What a shoot says of everything that can go wrong with the virtual camera, and that it is true.
#include <algorithm>
#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "tests/tether/command_test.h"
#include "tests/tether/faults/closing_words.h"
#include "tests/tether/faults/facts.h"

static void PrintTo(const Fact& fact, std::ostream* stream) {
    *stream << fact.scene;
}

namespace {

class ShootFaultTest : public CommandTest, public testing::WithParamInterface<Fact> {
  protected:
    // Until the shoot is over.
    void shoot(const Fact& fact) {
        write("scene", usual_scene + std::string(fact.scene) + "\n");
        std::vector<std::string> options{"--shots", "1"};
        for (const auto& more : {usual_options, fact.options}) {
            for (std::size_t index = 0; index < more.size(); index += 2) {
                const auto usual = std::find(options.begin(), options.end(), more[index]);
                if (usual != options.end()) {
                    usual[1] = more[index + 1];
                } else {
                    options.insert(options.end(), {more[index], more[index + 1]});
                }
            }
        }
        start_tether(options);
        for (const Moment& moment : fact.moments) {
            read_to(moment.after);
            if (moment.state != nullptr) {
                await_camera(moment.state);
            }
            for (const std::string& line : lines_of(std::string(moment.told) + "\n")) {
                tell_camera(line);
            }
        }
    }

    static bool makes_raw(const Fact& fact) {
        return std::any_of(fact.options.begin(), fact.options.end(),
                           [](const std::string& option) { return option == "both"; }) ||
               std::string(fact.form).starts_with("dial ") ||
               std::any_of(fact.moments.begin(), fact.moments.end(), [](const Moment& moment) {
                   return std::string(moment.told).starts_with("dial ");
               });
    }

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
    shoot(fact);
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
