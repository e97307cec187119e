// What a photographer waits for: from CAPTURE to the file, by the size of the file and the speed of
// the cable. The files are the user's own kind: bytes that are copied, not drawn.

#include <fstream>
#include <thread>

#include "bench/measure/bench.h"
#include "bench/measure/camera.h"
#include "bench/measure/statistics.h"
#include "bench/measure/subject.h"

namespace {

constexpr double megabyte = 1e6;

struct Cable {
    const char* name;
    int megabytes_a_second;
};
constexpr Cable cables[] = {
    {"USB 2, 40 MB/s", 40}, {"USB 3, 160 MB/s", 160}, {"USB 3.2, 400 MB/s", 400}};
constexpr int sizes[] = {1, 5, 10, 20, 30, 40, 50};

// Seconds.
double shutter_to_file(const Bench& bench, const Cable& cable, int size) {
    Camera camera("camera \"MODEL-A\" over USB, card in\nusb " +
                  std::to_string(cable.megabytes_a_second) + "MB/s");
    const auto own = camera.folder() / "own";
    std::filesystem::create_directory(own);
    std::ofstream(own / "a.jpg") << std::string(static_cast<std::size_t>(size * megabyte), 'x');
    Subject::Environment environment = camera.environment();
    environment.emplace_back("CAMERA_SIM_PICTURES", own);
    const std::string shots = camera.folder() / "shots";
    Subject worker(bench.worker(), {shots, "x", "disk"}, environment);
    worker.hear_until("READY|OK");
    worker.say("CONNECT\n");
    worker.hear_until("FILE_TYPE|jpeg");
    const auto start = Clock::now();
    worker.say("CAPTURE\n");
    worker.hear_until("DOWNLOADED|" + shots + "/DSC00001.JPG");
    return seconds(Clock::now() - start);
}

}  // namespace

void measure_shutter_to_file(Bench& bench) {
    constexpr double pauses = 0.7;  // until the release; no focusing, no exposure
    std::vector<Curve> measured;
    std::vector<Curve> alone;
    for (const Cable& cable : cables) {
        measured.push_back({"shutter to file", cable.name, {}});
        alone.push_back({"shutter to file, camera alone", cable.name, {}});
    }
    // The cables side by side: most of the time is spent waiting.
    std::vector<std::thread> threads;
    threads.reserve(measured.size());
    for (std::size_t cable = 0; cable < measured.size(); ++cable) {
        threads.emplace_back([&, cable] {
            for (const int size : sizes) {
                const double transfer =
                    static_cast<double>(size) / cables[cable].megabytes_a_second;
                alone[cable].points.emplace_back(size, pauses + transfer);
                measured[cable].points.emplace_back(size,
                                                    shutter_to_file(bench, cables[cable], size));
            }
        });
    }
    Samples beyond;
    for (std::size_t cable = 0; cable < measured.size(); ++cable) {
        threads[cable].join();
        for (std::size_t size = 0; size < std::size(sizes); ++size) {
            beyond.push_back(
                (measured[cable].points[size].second - alone[cable].points[size].second) * 1e3);
        }
        bench.results.curve(std::move(measured[cable]));
        bench.results.curve(std::move(alone[cable]));
    }
    bench.results.plain("Shutter to file, beyond the camera's own time", median(beyond), "ms",
                        "files of 1 to 50 MB over three cables");
}
