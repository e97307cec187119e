// The camera's journal as the transcripts read it.
#include "tests/worker/runner/playing/journal.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace {

using namespace transcript;
using std::chrono::milliseconds;

class JournalTest : public testing::Test {
  protected:
    ~JournalTest() override {
        std::filesystem::remove(file_);
    }

    void write(const std::string& text) {
        std::ofstream(file_, std::ios::app) << text;
    }

    std::vector<std::string> texts(bool with_reads) {
        std::vector<std::string> texts;
        for (const JournaledCall& call : journal_.calls(with_reads)) {
            texts.push_back(call.text);
        }
        return texts;
    }

    const std::filesystem::path file_ =
        std::filesystem::temp_directory_path() / ("journal-test-" + std::to_string(getpid()));
    Journal journal_{file_};
    std::string error_;
};

using Texts = std::vector<std::string>;

TEST_F(JournalTest, CallsAreReadAsTheyComeInWholeLines) {
    EXPECT_TRUE(journal_.read_on(error_));
    write("1.000000\t0.5\tmain\tConnect null 0\t0x00000000\n2.0\t-\tmain\tRele");
    EXPECT_TRUE(journal_.read_on(error_));
    EXPECT_EQ(texts(false), (Texts{"Connect null 0"}));
    write("ase\thangs\n");
    EXPECT_TRUE(journal_.read_on(error_));
    EXPECT_EQ(texts(false), (Texts{"Connect null 0", "Release"}));
    EXPECT_DOUBLE_EQ(journal_.calls(false)[0].end, 1.5);
    EXPECT_EQ(journal_.calls(false)[1].result, "hangs");
    journal_.settle();
    EXPECT_EQ(texts(true), Texts{});
    EXPECT_DOUBLE_EQ(journal_.settled_end(), 2.0);
}

TEST_F(JournalTest, CallbacksAreLeftOutAndReadsShownOnRequest) {
    write(
        "1\t-\tsdk-1\tOnConnected 3\t-\n"
        "1\t0\tmain\tGetSelectDeviceProperties 0x0708\t0x00000000 1\n"
        "1\t0\tmain\tReleaseDeviceProperties 1\t0x00000000\n"
        "1\t0\tmain\tReleaseEnumeration\t-\n"
        "1\t0\tmain\tSetDeviceProperty 0x0119 1\t0x00000000\n");
    EXPECT_TRUE(journal_.read_on(error_));
    EXPECT_EQ(texts(false), (Texts{"SetDeviceProperty 0x0119 1"}));
    EXPECT_EQ(texts(true).size(), 4u);
}

TEST_F(JournalTest, ACallFromAnotherThreadIsAnError) {
    write("1\t0\tsdk-1\tRelease\ttrue\n");
    EXPECT_FALSE(journal_.read_on(error_));
    EXPECT_EQ(error_, "Release by the thread \"sdk-1\"");
}

TEST_F(JournalTest, ALineThatIsNoneIsAnError) {
    write("1\t0\tmain\tRelease\n");
    EXPECT_FALSE(journal_.read_on(error_));
    EXPECT_EQ(error_, "no journal line: \"1\t0\tmain\tRelease\"");
}

JournaledCall made(double start, double end, const char* text, const char* result = "0x00000000") {
    return {start, end, "main", text, result};
}

TEST(Compare, CallsMustBeTheSameInTheSameOrder) {
    const std::vector<Call> expected{{"Disconnect 1", {}, {}}, {"Release", {}, "true"}};
    EXPECT_EQ(compare(expected, {made(1, 1, "Disconnect 1"), made(2, 2, "Release", "true")}, 0),
              "");
    EXPECT_EQ(compare(expected, {made(1, 1, "Disconnect 1")}, 0), "no Release");
    EXPECT_EQ(compare(expected, {}, 0), "no Disconnect 1");
    EXPECT_EQ(compare(expected, {made(1, 1, "Disconnect 2"), made(2, 2, "Release", "true")}, 0),
              "Disconnect 2 in the place of Disconnect 1");
    EXPECT_EQ(compare(expected, {made(1, 1, "Disconnect 1"), made(2, 2, "Release", "false")}, 0),
              "Release -> false in the place of Release");
    EXPECT_EQ(compare({}, {made(1, 1, "Release")}, 0), "Release besides");
    EXPECT_EQ(compare({}, {}, 0), "");
}

TEST(Compare, PausesCountFromTheEndOfTheCallBefore) {
    const std::vector<Call> expected{{"SendCommand 0 1", milliseconds(700), {}},
                                     {"SendCommand 0 0", milliseconds(35), {}}};
    const auto with = [&](double first, double second) {
        return compare(
            expected,
            {made(first, first + 0.1, "SendCommand 0 1"), made(second, second, "SendCommand 0 0")},
            10);
    };
    EXPECT_EQ(with(10.7, 10.835), "");
    EXPECT_EQ(with(10.6995, 10.8349), "");
    EXPECT_EQ(with(15.6, 15.8), "");
    EXPECT_EQ(with(10.69, 10.9),
              "SendCommand 0 1 690 ms after the call before it in the place of SendCommand 0 1");
    EXPECT_EQ(with(10.7, 10.82),
              "SendCommand 0 0 20 ms after the call before it in the place of SendCommand 0 0");
    EXPECT_NE(with(15.8, 16), "");
}

}  // namespace
