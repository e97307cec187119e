// A session on the virtual camera: brought up, shot with, lost and brought back, ended.
#include <ctime>
#include <unistd.h>

#include "host/camera/uptime.h"
#include "host/values/iso_time.h"
#include "tests/host/camera/camera_test.h"
#include "tests/host/open_descriptors.h"

namespace {

using host::Code;
using host::ShotStatus;
using host::State;

using CameraSessionTest = CameraTest;

TEST_F(CameraSessionTest, TheWorkerIsThereBeforeAnyCamera) {
    write("scene", "no camera\n");
    const auto problem = make().start();
    EXPECT_FALSE(problem) << problem->text;
    EXPECT_EQ(camera_->banner(), "START sony-1.0");
    await("the word that it is virtual",
          [](const Told& told) { return !told.states.empty() && told.states.back().simulated; });
    EXPECT_EQ(told().states.back().state, State::idle);
}

TEST_F(CameraSessionTest, ACaptureWithoutASessionIsRefused) {
    const host::Shot shot = make().capture();
    EXPECT_EQ(shot.status, ShotStatus::refused);
    ASSERT_EQ(shot.problems.size(), 1u);
    EXPECT_EQ(shot.problems[0].code, Code::not_connected);
    EXPECT_EQ(shot.problems[0].text, "No camera has been connected yet.");
}

TEST_F(CameraSessionTest, ACaptureBringsItsPicture) {
    connect();
    const std::string before = host::iso_time(host::time_of_day());
    const host::Shot shot = camera_->capture();
    EXPECT_EQ(shot.status, ShotStatus::complete);
    EXPECT_LE(before, shot.fired_at);
    EXPECT_LE(shot.fired_at, host::iso_time(host::time_of_day()));
    EXPECT_EQ(shot.number, 1u);
    ASSERT_EQ(shot.pictures.size(), 1u);
    EXPECT_EQ(shot.pictures[0].path, folder_ / "shots/DSC00001.JPG");
    EXPECT_EQ(read("shots/DSC00001.JPG"), jpeg("first picture"));
    const Told told = this->told();
    ASSERT_EQ(told.pictures.size(), 1u);
    EXPECT_EQ(told.pictures[0], shot.pictures[0]);
    ASSERT_EQ(told.shots.size(), 2u) << "fired, and over";
    EXPECT_EQ(told.shots[0].status, ShotStatus::fired);
    EXPECT_EQ(told.shots[1], shot);
    EXPECT_TRUE(told.problems.empty()) << told.problems[0].text;
}

// What the host does not know of yet is told again after the next start.
TEST_F(CameraSessionTest, APictureIsToldUntilTheHostKnowsOfIt) {
    const auto ids_of_a_start = [&] {
        const std::size_t before = told().pictures.size();
        connect();
        std::vector<std::string> ids;
        for (const host::Picture& picture : told().pictures) {
            ids.push_back(picture.id);
        }
        ids.erase(ids.begin(), ids.begin() + static_cast<std::ptrdiff_t>(before));
        return ids;
    };
    connect().capture();
    const std::string known = told().pictures.at(0).id;
    EXPECT_EQ(ids_of_a_start(), std::vector<std::string>{}) << "the listener took it";
    options_.listener.picture = [listener = options_.listener.picture](const auto& picture) {
        listener(picture);
        return false;
    };
    connect().capture();
    const std::string unknown = told().pictures.at(1).id;
    EXPECT_NE(unknown, known);
    EXPECT_EQ(ids_of_a_start(), std::vector<std::string>{unknown});
    camera_->told(unknown);
    EXPECT_EQ(ids_of_a_start(), std::vector<std::string>{});
}

TEST_F(CameraSessionTest, BothHalvesOfAPairAreAwaited) {
    if (!PICTURES_CAN_BE_DRAWN) {
        GTEST_SKIP() << "only the picture module makes RAW files";
    }
    write("scene", "timing instant\npicture 320x240\ncamera \"MODEL-A\" over USB, card in\n");
    options_.environment.pop_back();
    options_.wishes.file_type = host::FileType::both;
    options_.wishes.save_destination = host::SaveDestination::both;
    const host::Shot shot = connect().capture();
    EXPECT_EQ(shot.status, ShotStatus::complete);
    ASSERT_EQ(shot.pictures.size(), 2u);
    EXPECT_EQ(shot.pictures[0].pair, shot.pictures[1].pair);
    EXPECT_NE(shot.pictures[0].kind, shot.pictures[1].kind);
}

TEST_F(CameraSessionTest, APictureOfTheButtonIsToldUnasked) {
    connect();
    tell_camera("shutter");
    await_pictures(1);
    EXPECT_FALSE(told().pictures[0].shot);
    EXPECT_EQ(camera_->capture().status, ShotStatus::complete);
}

TEST_F(CameraSessionTest, ALostCameraIsConnectedAgainByItself) {
    connect();
    tell_camera("unplug");
    await_problem(Code::camera_lost);
    tell_camera("plug");
    await("the session", [](const Told& told) {
        return told.states.back().state == State::ready && told.states.back().problems.empty();
    });
    EXPECT_EQ(camera_->capture().status, ShotStatus::complete);
    EXPECT_EQ(told().states.back().restarts, 0u) << "by the same worker";
}

TEST_F(CameraSessionTest, TheShotThatIsLostWithTheCameraIsAnswered) {
    write("scene", "timing instant\nnext file late 600s\ncamera \"MODEL-A\" over USB, card in\n");
    connect();
    ask(host::Capture{});
    await("CAPTURE's answer", [](const Told& told) {
        return !told.lines.empty() && told.lines.back().text == "PRIME_DONE|OK" &&
               told.shots.size() == 1;
    });
    tell_camera("unplug");
    await("the answer", [](const Told& told) { return !told.answers.empty(); });
    const Told told = this->told();
    ASSERT_EQ(told.answers.size(), 1u);
    const auto* shot = std::get_if<host::Shot>(&told.answers[0]);
    ASSERT_NE(shot, nullptr);
    EXPECT_EQ(shot->status, ShotStatus::none);
    ASSERT_EQ(shot->problems.size(), 1u);
    EXPECT_EQ(shot->problems[0].code, Code::camera_lost);
    EXPECT_EQ(told.shots.back(), *shot);
}

TEST_F(CameraSessionTest, NoCameraIsAProblemAndTriedOn) {
    write("scene", "timing instant\nno camera\n");
    times_.connect_request = std::chrono::milliseconds(200);
    make().ask(host::Connect{}, [](const host::Answer&) {});
    await_problem(Code::camera_not_found);
    const auto problem = camera_->connect();
    ASSERT_TRUE(problem);
    EXPECT_EQ(problem->code, Code::camera_not_found);
    tell_camera("camera MODEL-B over USB");
    await_state(State::ready);
    EXPECT_EQ(told().states.back().camera, "MODEL-B");
}

TEST_F(CameraSessionTest, AFolderIsChangedBetweenShots) {
    connect();
    EXPECT_EQ(camera_->capture().status, ShotStatus::complete);
    host::Configure change;
    change.folder = folder_ / "others";
    const host::Answer answer = answer_to(change);
    ASSERT_TRUE(std::holds_alternative<host::SessionState>(answer));
    EXPECT_EQ(std::get<host::SessionState>(answer).folder, folder_ / "others");
    const host::Shot shot = camera_->capture();
    ASSERT_EQ(shot.pictures.size(), 1u);
    EXPECT_EQ(fs::path(shot.pictures[0].path).parent_path(), folder_ / "others");
    EXPECT_TRUE(fs::exists(folder_ / "shots/DSC00001.JPG"));
}

TEST_F(CameraSessionTest, AFolderThatIsChangedOnAndOnLeavesNothingOpen) {
    connect();
    const auto change_to = [&](const std::string& name) {
        host::Configure change;
        change.folder = folder_ / name;
        const host::Answer answer = answer_to(change);
        ASSERT_TRUE(std::holds_alternative<host::SessionState>(answer)) << name;
        ASSERT_EQ(std::get<host::SessionState>(answer).folder, folder_ / name);
    };
    // The runs of the latest folders are kept for files that come late.
    for (std::size_t move = 0; move < 2 * host::brain::limit::old_runs; ++move) {
        change_to("before-" + std::to_string(move));
    }
    const int descriptors = open_descriptors();
    for (int move = 0; move < 200; ++move) {
        change_to("folder-" + std::to_string(move));
    }
    EXPECT_LE(open_descriptors(), descriptors + 6) << "as much as one more folder";
    EXPECT_EQ(camera_->capture().status, ShotStatus::complete);
    EXPECT_TRUE(fs::exists(folder_ / "folder-199/DSC00001.JPG"));
}

TEST_F(CameraSessionTest, AFolderThatGoesAwayIsSaidAndNotMadeAgain) {
    connect();
    fs::rename(folder_ / "shots", folder_ / "moved");
    const host::Shot shot = camera_->capture();
    EXPECT_EQ(shot.status, ShotStatus::refused);
    ASSERT_EQ(shot.problems.size(), 1u);
    EXPECT_EQ(shot.problems[0].code, Code::folder_gone);
    EXPECT_FALSE(fs::exists(folder_ / "shots"));
}

// Its path is the same, and the worker must be told all the same.
TEST_F(CameraSessionTest, AFolderInTheSteadOfAnotherIsTakenOnceItIsAskedFor) {
    connect();
    const std::vector<std::function<void()>> losses{[&] {
                                                        fs::rename(folder_ / "shots",
                                                                   folder_ / "moved");
                                                        fs::create_directory(folder_ / "shots");
                                                    },
                                                    [&] {
                                                        fs::remove_all(folder_ / "shots/.incoming");
                                                    }};
    for (const auto& lose : losses) {
        lose();
        const host::Shot refused = camera_->capture();
        EXPECT_EQ(refused.status, ShotStatus::refused);
        ASSERT_EQ(refused.problems.size(), 1u);
        EXPECT_EQ(refused.problems[0].code, Code::folder_gone);
        host::Configure change;
        change.folder = folder_ / "shots";
        const host::Answer answer = answer_to(change);
        ASSERT_TRUE(std::holds_alternative<host::SessionState>(answer));
        EXPECT_TRUE(std::get<host::SessionState>(answer).problems.empty());
        const host::Shot shot = camera_->capture();
        EXPECT_EQ(shot.status, ShotStatus::complete);
        ASSERT_EQ(shot.pictures.size(), 1u);
        EXPECT_EQ(fs::path(shot.pictures[0].path).parent_path(), folder_ / "shots");
    }
}

TEST_F(CameraSessionTest, TheEndIsInOrderAndLeavesNothingBehind) {
    const auto made = host::Clock::now();
    connect();
    const pid_t process = worker_process();
    const host::Ended ended = camera_->shutdown();
    EXPECT_EQ(ended, (host::Ended{host::WorkerEnd::quit, 0}));
    std::vector<std::string> said;
    host::Time last{};
    for (const host::WireLine& line : told().lines) {
        EXPECT_LE(last, line.at) << line.text;
        last = line.at;
        if (line.direction == host::WireLine::Direction::to_worker) {
            said.push_back(line.text);
        }
    }
    EXPECT_LE(last, host::Clock::now() - made) << "they count from when the camera was made";
    EXPECT_EQ(said.back(), "QUIT");
    EXPECT_TRUE(is_gone(process));
    EXPECT_NE(read("journal").find("\tRelease\ttrue\n"), std::string::npos);
    EXPECT_EQ(camera_->shutdown(), ended) << "the second one shares the first one's end";
    EXPECT_TRUE(camera_->connect()) << "it is over";
}

TEST_F(CameraSessionTest, ACameraThatIsDestroyedEndsItsWorker) {
    connect();
    const pid_t process = worker_process();
    camera_.reset();
    EXPECT_TRUE(is_gone(process));
    EXPECT_NE(read("journal").find("\tRelease\ttrue\n"), std::string::npos);
}

// The processor's time that this process has taken.
std::chrono::nanoseconds effort() {
    timespec used{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
    return std::chrono::seconds(used.tv_sec) + std::chrono::nanoseconds(used.tv_nsec);
}

// Said by the lines alone: the picture is on its way when the end is asked for.
TEST_F(CameraSessionTest, FilesOnTheirWayAreWaitedForAtTheEnd) {
    write("scene", "timing instant\nnext file late 2s\ncamera \"MODEL-A\" over USB, card in\n");
    connect();
    // Each waits anew; all that they have waited for is more than one may wait for at once.
    const DescriptorLimit limit(256);
    for (int number = 0; number < 300; ++number) {
        answer_to(host::Cancel{"of no shot"});
    }
    camera_->ask(host::Capture{}, [](const host::Answer&) {});
    await("the release", [](const Told& told) {
        return !told.lines.empty() && told.lines.back().text == "PRIME_DONE|OK" &&
               told.shots.size() == 1;
    });
    const auto before = effort();
    EXPECT_EQ(camera_->shutdown().worker, host::WorkerEnd::quit);
    EXPECT_LT(effort() - before, std::chrono::milliseconds(300))
        << "of 2 s in which nothing happens";
    ASSERT_EQ(told().pictures.size(), 1u);
    EXPECT_EQ(told().pictures[0].shot, 1u);
}

host::PicturesAnswer listed(host::Camera& camera, const std::string& after, std::size_t limit) {
    host::Mutex mutex;
    std::condition_variable given;
    std::optional<host::PicturesAnswer> answer;
    camera.pictures(after, limit, [&](const host::PicturesAnswer& pictures) {
        const host::MutexLock lock(mutex);
        answer = pictures;
        given.notify_all();
    });
    const host::MutexLock lock(mutex);
    while (!answer) {
        mutex.wait(given);
    }
    return *answer;
}

TEST_F(CameraSessionTest, ThePicturesAreListedFromTheLedger) {
    connect();
    const host::Shot first = camera_->capture();
    const host::Shot second = camera_->capture();
    const auto list = [&](const std::string& after, std::size_t limit) {
        return std::get<std::vector<host::Picture>>(listed(*camera_, after, limit));
    };
    ASSERT_EQ(first.pictures.size() + second.pictures.size(), 2u);
    EXPECT_EQ(list("", 100), (std::vector<host::Picture>{first.pictures[0], second.pictures[0]}));
    EXPECT_EQ(list("", 1), (std::vector<host::Picture>{first.pictures[0]}));
    EXPECT_EQ(list(first.pictures[0].id, 100), (std::vector<host::Picture>{second.pictures[0]}));
}

// Another program has the folder: the disk's thread waits for it.
TEST_F(CameraSessionTest, AListIsAnsweredWhileTheDiskIsStuck) {
    connect();
    host::CameraOptions second = options_;
    second.listener = {};
    second.listener.state = [listener = options_.listener.state](const auto& state) {
        if (state.waited_for) {
            listener(state);
        }
    };
    host::Camera other(second);
    other.ask(host::Start{}, [](const host::Answer&) {});
    await("what is waited for",
          [](const Told& told) { return told.states.back().waited_for.has_value(); });
    EXPECT_EQ(told().states.back().waited_for->text, "The folder " + (folder_ / "shots").string() +
                                                         " is used by another program, process " +
                                                         std::to_string(getpid()) + ".");
    const auto asked = host::Clock::now();
    const host::PicturesAnswer answer = listed(other, "", 100);
    EXPECT_LT(host::Clock::now() - asked, std::chrono::seconds(5)) << "not the 20 s of the lock";
    ASSERT_TRUE(std::holds_alternative<host::Problem>(answer));
    EXPECT_EQ(std::get<host::Problem>(answer).text, "The disk of the folder does not answer.");
}

}  // namespace
