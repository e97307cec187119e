// Commands that pile up behind an SDK call that does not come back.

#include <sys/ioctl.h>
#include <thread>

#include "bench/measure/bench.h"
#include "bench/measure/camera.h"
#include "bench/measure/kernel.h"
#include "bench/measure/subject.h"

namespace {

constexpr int steps = 20;
constexpr int lines_a_step = 5000;

// Waits until the reader has taken all there is, and gives what is resident then.
double settled_bytes(const Subject& worker) {
    double before = 0;
    for (;;) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        const double now = *resident_bytes(worker.process());
        if (now == before) {
            return now;
        }
        before = now;
    }
}

Curve pile_up(const Bench& bench, const std::string& name, const std::string& line) {
    Camera camera("next EnumCameraObjects hangs");
    Subject worker(bench.worker(), {}, camera.environment());
    worker.hear_until("READY|OK");
    worker.say("CONNECT\n");
    worker.hear_until("STATUS|Looking for a camera");
    std::string bytes;
    for (int count = 0; count < lines_a_step; ++count) {
        bytes += line + "\n";
    }
    const double empty = settled_bytes(worker);
    Curve curve{"queue", name, {{0, 0}}};
    for (int step = 1; step <= steps; ++step) {
        worker.say(bytes);
        curve.points.emplace_back(step * lines_a_step, settled_bytes(worker) - empty);
    }
    return curve;
}

}  // namespace

void measure_queue(Bench& bench) {
    {
        const Subject worker(bench.worker());
        if (!resident_bytes(worker.process())) {
            bench.results.skipped("Memory of queued commands", "this system has no /proc");
            return;
        }
    }
    for (const std::size_t length : {std::size_t{8}, std::size_t{64}, std::size_t{256}}) {
        const std::string name = std::to_string(length) + " bytes";
        Curve curve = pile_up(bench, name, std::string(length, 'x'));
        const auto [lines, bytes] = curve.points.back();
        bench.results.plain("Memory of a queued command of " + name, bytes / lines, "bytes");
        bench.results.curve(std::move(curve));
    }
}
