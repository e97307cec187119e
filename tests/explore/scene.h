#pragma once

#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <vector>

#include "tests/explore/camera.h"
#include "tests/explore/process.h"
#include "tests/explore/time.h"

// A scene: the worker, and who acts upon it. Each script runs on a fiber of its own beside the
// worker's threads.
namespace explore {

struct Scene {
    const char* name;
    const char* proves;                        // one sentence
    std::vector<const char*> arguments = {};   // of the worker's command line
    void (*prepare)() = nullptr;               // sets the camera and the process before main
    Answer (*answer)(const Asked&) = nullptr;  // null: every call succeeds at once
    void (*host)() = nullptr;
    void (*camera)() = nullptr;  // the SDK's thread
    void (*second)() = nullptr;  // another thread of the SDK
    void (*signals)() = nullptr;
    // How often the clock may move on although some thread could, and how far at least: a machine
    // that is slow at the wrong moment.
    int jumps = 0;
    Time jump_length = 0;
    // Nothing is waited for beyond this.
    Time longest = 300 * explore::second;
};

// All scenes that are played under every schedule, in the order of the report.
const std::vector<const Scene*>& scenes();

// Null: there is none.
const Scene* scene_named(const std::vector<const Scene*>& scenes, std::string_view name);
// Among these and those of the faults.
const Scene* scene_named(std::string_view name);

}  // namespace explore

// What scripts say.
namespace explore {

void pause(Time length);

}  // namespace explore

namespace explore::host {

using explore::pause;

void write(const char* line);
// Writes CONNECT and awaits that the session is up.
void connect();
// Goes on when everything written so far has been handled.
void settle();
void close_input();
// Goes on when the worker has written this line, after the one awaited before.
void await(const char* line);
// The same, but the line may also have come before: for lines of threads that cross.
void await_anywhere(const char* line);
// For any line that begins so.
void await_beginning(const char* text);
void stop_reading();
void read_again();

}  // namespace explore::host

namespace explore::device {

using explore::pause;
// Goes on when the worker's n-th Connect has been accepted.
void await_connect(std::size_t number = 1);
// Answers the first of them.
void answer_connect();
// Goes on when the worker has called the function for the n-th time.
void await_call(Call call, std::size_t number = 1);
// Something changes at the camera; nobody is told.
void set(std::uint32_t code, std::uint64_t value);

// The cable is pulled, and plugged in again: meanwhile every call for the camera fails.
void go_away();
void come_back();

void connected(int version = 3);
void disconnected(std::uint32_t error);
void warning(std::uint32_t code);
void error(std::uint32_t code);
void properties(std::initializer_list<std::uint32_t> codes);
void downloaded(const char* name, std::uint32_t type = 0xFFFFFFFF);

}  // namespace explore::device

namespace explore::kernel {

using explore::pause;
void raise_signal(int number);
// Every thread that waits for a condition wakes without having been told.
void wake_for_nothing();

}  // namespace explore::kernel
