// A camera on the virtual camera, or on a script in the worker's place, with all that it tells.
#pragma once

#include <condition_variable>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <signal.h>
#include <string>
#include <vector>

#include "host/brain/times.h"
#include "host/camera.h"
#include "host/process/mutex.h"
#include "tests/host/virtual_camera_test.h"

// Far beyond what anything here needs; only a failing test waits for it.
constexpr std::chrono::seconds patience{60};

// What a camera has told. Any thread.
struct Told {
    std::vector<host::SessionState> states;
    std::vector<host::Picture> pictures;
    std::vector<host::Shot> shots;
    std::vector<host::Problem> problems;
    std::vector<host::WireLine> lines;
    std::vector<host::Answer> answers;
};

class CameraTest : public VirtualCameraTest {
  protected:
    CameraTest() {
        // The tests ask for the number of the worker's process.
        options_.worker = script(
            "worker", "echo $$ >> " + (folder_ / "processes").string() + "\nexec " WORKER "\n");
        options_.environment = {{"CAMERA_SIM_SCENE", folder_ / "scene"},
                                {"CAMERA_SIM_CONTROL", folder_ / "control"},
                                {"CAMERA_SIM_JOURNAL", folder_ / "journal"},
                                {"CAMERA_SIM_PICTURES", folder_ / "own"}};
        options_.wishes.folder = folder_ / "shots";
        options_.times = &times_;
        options_.listener = listener();
    }
    ~CameraTest() override {
        camera_.reset();
    }

    host::Camera& make() {
        camera_ = std::make_unique<host::Camera>(options_);
        return *camera_;
    }

    // Made, and with a session.
    host::Camera& connect() {
        const auto problem = make().connect();
        EXPECT_FALSE(problem) << problem->text;
        return *camera_;
    }

    // The process of the latest worker, of those that script() made.
    pid_t worker_process() {
        std::ifstream processes(folder_ / "processes");
        pid_t process = 0;
        while (processes >> process) {}
        return process;
    }

    static bool is_gone(pid_t process) {
        return kill(process, 0) != 0;
    }

    // Waits until that holds of what was told.
    void await(const char* what, const std::function<bool(const Told&)>& holds) {
        const host::TimePoint deadline = host::after(patience);
        const host::MutexLock lock(mutex_);
        while (!holds(told_)) {
            if (!mutex_.wait_until(changed_, deadline)) {
                FAIL() << what << " did not come";
            }
        }
    }

    void await_state(host::State state) {
        await("the state", [=](const Told& told) {
            return !told.states.empty() && told.states.back().state == state;
        });
    }

    void await_problem(host::Code code) {
        await("the problem", [=](const Told& told) {
            for (const host::Problem& problem : told.problems) {
                if (problem.code == code) {
                    return true;
                }
            }
            return false;
        });
    }

    void await_pictures(std::size_t count) {
        await("the picture", [=](const Told& told) { return told.pictures.size() >= count; });
    }

    Told told() {
        const host::MutexLock lock(mutex_);
        return told_;
    }

    // The answer is told beside everything else: it may come after the test, too.
    void ask(host::Request request) {
        camera_->ask(std::move(request),
                     [this](const host::Answer& given) { add(told_.answers, given); });
    }

    host::Answer answer_to(host::Request request) {
        const std::size_t before = told().answers.size();
        ask(std::move(request));
        await("the answer", [=](const Told& told) { return told.answers.size() > before; });
        const Told told = this->told();
        return told.answers.size() > before ? told.answers[before] : host::Answer(host::Done{});
    }

    host::brain::Times times_;
    host::CameraOptions options_;
    std::unique_ptr<host::Camera> camera_;

  private:
    host::Listener listener() {
        host::Listener listener;
        listener.state = [this](const host::SessionState& state) {
            add(told_.states, state);
        };
        listener.picture = [this](const host::Picture& picture) {
            add(told_.pictures, picture);
            return true;
        };
        listener.shot = [this](const host::Shot& shot) {
            add(told_.shots, shot);
        };
        listener.problem = [this](const host::Problem& problem) {
            add(told_.problems, problem);
        };
        listener.line = [this](const host::WireLine& line) {
            add(told_.lines, line);
        };
        return listener;
    }
    template <typename One>
    void add(std::vector<One>& all, const One& one) {
        const host::MutexLock lock(mutex_);
        all.push_back(one);
        changed_.notify_all();
    }

    host::Mutex mutex_;
    std::condition_variable changed_;
    Told told_;  // under the lock
};
