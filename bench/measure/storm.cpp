// A camera gone mad: how many of its notices the worker carries out in a second, and how many
// arrived files it reports.

#include "bench/measure/bench.h"
#include "bench/measure/camera.h"
#include "bench/measure/statistics.h"
#include "bench/measure/subject.h"

namespace {

struct Connected {
    explicit Connected(const Bench& bench)
        : camera("camera \"MODEL-A\" over USB, card in"),
          worker(bench.worker(), {camera.folder() / "shots", "x", "disk"}, camera.environment()) {
        worker.hear_until("READY|OK");
        worker.say("CONNECT\n");
        worker.hear_until("FILE_TYPE|jpeg");
    }

    Camera camera;
    Subject worker;
};

// Each notice has the file type read from the camera and compared; nothing has changed, so no line
// is written.
double notices_a_second(Connected& session, int count) {
    const auto start = Clock::now();
    session.camera.tell("storm " + std::to_string(count) + " 0x0106\nwait\n");
    session.camera.await_answers(2);
    session.worker.say("PRIME\n");
    session.worker.hear_until("PRIME_DONE|OK");
    return count / seconds(Clock::now() - start);
}

// Reported a hundred at a time, so that neither pipe nor socket stands still.
double files_a_second(Connected& session, int count) {
    constexpr int at_once = 100;
    std::string lines;
    for (int file = 0; file < at_once; ++file) {
        lines += "deliver \"DSC00001.JPG\" 0xFFFFFFFF\n";
    }
    const auto start = Clock::now();
    for (int files = 0; files < count; files += at_once) {
        session.camera.tell(lines);
        for (int line = 0; line < at_once * 2; ++line) {
            session.worker.hear();
        }
        session.camera.await_answers(at_once);
    }
    return count / seconds(Clock::now() - start);
}

}  // namespace

void measure_storm(Bench& bench) {
    Connected session(bench);
    Samples files;
    for (const int count : {100, 1'000, 10'000}) {
        Samples notices;
        for (int round = 0; round < 5; ++round) {
            notices.push_back(notices_a_second(session, count));
        }
        bench.results.plain("Notices of the camera, a storm of " + grouped(count), median(notices),
                            "a second");
    }
    for (int round = 0; round < 5; ++round) {
        files.push_back(files_a_second(session, 5'000));
    }
    bench.results.plain("Files through the download report", median(files), "a second");
}
