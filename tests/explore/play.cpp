#include "tests/explore/play.h"

#include <cstdio>
#include <vector>

#include "tests/explore/camera.h"
#include "tests/explore/faults/circumstances.h"
#include "tests/explore/process.h"
#include "tests/explore/trace.h"

namespace explore {

namespace {

constexpr Time poll_horizon = 2 * second;

const WorkerLibrary* g_worker = nullptr;
const Scene* g_scene = nullptr;
std::size_t g_wrong = 0;

void run_main(void*) {
    // Kept, because this frame is left without unwinding.
    static auto& arguments = *new std::vector<char*>;
    arguments.assign({const_cast<char*>("sony-worker")});
    for (const char* argument : g_scene->arguments) {
        arguments.push_back(const_cast<char*>(argument));
    }
    arguments.push_back(nullptr);
    exit_process(g_worker->main(static_cast<int>(arguments.size()) - 1, arguments.data()));
}

void start_script(const char* name, void (*script)()) {
    if (script != nullptr) {
        start_fiber(
            name, false, [](void* body) { reinterpret_cast<void (*)()>(body)(); },
            reinterpret_cast<void*>(script));
    }
}

void start_scripts() {
    start_script("host", g_scene->host);
    start_script("SDK thread", g_scene->camera);
    start_script("second SDK thread", g_scene->second);
    start_script("kernel", g_scene->signals);
}

}  // namespace

std::string story() {
    std::string text;
    for (std::size_t i = 0; i < trace.size(); ++i) {
        text += (i == g_wrong ? "=> " : "   ") + describe(trace[i]) + "\n";
    }
    return text;
}

Verdict play(const WorkerLibrary& worker, const Scene& scene, Choices& choices,
             model::Model& model) {
    g_worker = &worker;
    g_scene = &scene;
    restore_worker();
    begin_process();
    begin_camera();
    begin_reading();
    begin_circumstances();
    trace.clear();
    if (scene.prepare != nullptr) {
        scene.prepare();
    }
    camera.answer = scene.answer;
    choices.taken.clear();
    run.choices = &choices;
    run.jumps_left = scene.jumps;
    run.jump_length = scene.jump_length;
    run.horizon = poll_horizon;
    run.time_limit = scene.longest;
    carry_out(run_main, start_scripts);
    g_wrong = trace.size();
    if (run.ending == Ending::failed || run.ending == Ending::stuck) {
        return Verdict::wrong;
    }
    // A run that stops because its state is known has come there another way, and what could be
    // seen on that way may be wrong. The beginning of what is right is right.
    g_wrong = model.follow(trace);
    if (g_wrong == trace.size()) {
        return run.ending == Ending::pruned ? Verdict::pruned : Verdict::right;
    }
    std::snprintf(run.complaint, sizeof run.complaint,
                  "the protocol does not allow this to happen now: %s",
                  describe(trace[g_wrong]).c_str());
    return Verdict::wrong;
}

}  // namespace explore
