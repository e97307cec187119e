#include "tether/serve/virtual_camera.h"

#include <cstring>
#include <future>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "host/process/pipe.h"
#include "tests/temporary_folder.h"

namespace serve {
namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;
using std::chrono::seconds;
using Lines = std::optional<std::vector<std::string>>;

// Listens where a virtual camera would, and answers what a test says.
class VirtualCameraTest : public testing::Test {
  protected:
    VirtualCameraTest() {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strcpy(address.sun_path, path().c_str());
        listener_ = host::Descriptor(::socket(AF_UNIX, SOCK_STREAM, 0));
        EXPECT_EQ(::bind(listener_.number(), reinterpret_cast<sockaddr*>(&address), sizeof address),
                  0);
        EXPECT_EQ(::listen(listener_.number(), 8), 0);
    }

    std::string path() const {
        return folder_ / "camera";
    }

    // The line that a client says, answered.
    std::string answer(const std::string& text) {
        const host::Descriptor client(::accept(listener_.number(), nullptr, nullptr));
        std::string line;
        for (char byte = 0; ::read(client.number(), &byte, 1) == 1 && byte != '\n';) {
            line += byte;
        }
        host::write_all(client, text, host::after(seconds(20)));
        return line;
    }

    static VirtualCamera::Answered into(std::promise<Lines>& promise) {
        return [&promise](const Lines& lines) {
            promise.set_value(lines);
        };
    }

    const TemporaryFolder made_;
    const fs::path folder_ = made_.path();
    host::Descriptor listener_;
};

Lines result(std::promise<Lines>& promise) {
    auto future = promise.get_future();
    EXPECT_EQ(future.wait_for(seconds(60)), std::future_status::ready);
    return future.get();
}

TEST_F(VirtualCameraTest, GivesTheLinesOfTheAnswerWithItsEnd) {
    VirtualCamera camera(path());
    std::promise<Lines> promise;
    EXPECT_TRUE(camera.tell("state", host::after(seconds(20)), into(promise)));
    EXPECT_EQ(answer("  session open\n  ok then\nok\n"), "state");
    EXPECT_EQ(result(promise), (std::vector<std::string>{"session open", "ok then", "ok"}));
}

TEST_F(VirtualCameraTest, ARefusalEndsTheAnswerToo) {
    VirtualCamera camera(path());
    std::promise<Lines> promise;
    camera.tell("fly", host::after(seconds(20)), into(promise));
    answer("error: There is no command \"fly\".\n");
    EXPECT_EQ(result(promise), (std::vector<std::string>{"error: There is no command \"fly\"."}));
}

TEST_F(VirtualCameraTest, ACameraThatHangsIsGivenUp) {
    VirtualCamera camera(path());
    std::promise<Lines> promise;
    camera.tell("wait", host::after(milliseconds(100)), into(promise));
    EXPECT_EQ(result(promise), std::nullopt);
}

TEST_F(VirtualCameraTest, ACameraThatGoesAwayInTheMiddleIsGivenUp) {
    VirtualCamera camera(path());
    std::promise<Lines> promise;
    camera.tell("state", host::after(seconds(20)), into(promise));
    answer("  session open\n");
    EXPECT_EQ(result(promise), std::nullopt);
}

TEST_F(VirtualCameraTest, AnEndlessAnswerIsGivenUp) {
    VirtualCamera camera(path());
    std::promise<Lines> promise;
    camera.tell("state", host::after(seconds(20)), into(promise));
    answer(std::string(2000000, 'a'));
    EXPECT_EQ(result(promise), std::nullopt);
}

TEST_F(VirtualCameraTest, NobodyThereIsSaidAtOnce) {
    VirtualCamera camera(folder_ / "nobody");
    std::promise<Lines> promise;
    camera.tell("state", host::after(seconds(60)), into(promise));
    EXPECT_EQ(result(promise), std::nullopt);
    VirtualCamera nowhere(std::string(200, 'a'));
    std::promise<Lines> too_long;
    nowhere.tell("state", host::after(seconds(60)), into(too_long));
    EXPECT_EQ(result(too_long), std::nullopt);
}

TEST_F(VirtualCameraTest, OnlySomeQuestionsWait) {
    VirtualCamera camera(path());
    int taken = 0;
    while (taken < 100 &&
           camera.tell("wait", host::after(milliseconds(500)), [](const Lines&) {})) {
        ++taken;
    }
    EXPECT_GE(taken, 8);
    EXPECT_LE(taken, 9);
}

}  // namespace
}  // namespace serve
