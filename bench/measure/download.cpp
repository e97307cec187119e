// From the SDK's report of a file to the DOWNLOADED line in the host's hands, beside the echo's way
// from a line written to a line in its main thread's hands.

#include <cstdlib>

#include "bench/measure/bench.h"
#include "bench/measure/camera.h"
#include "bench/measure/one_way.h"
#include "bench/measure/statistics.h"
#include "bench/measure/subject.h"

void measure_download(Bench& bench, int cores) {
    Camera camera("camera \"MODEL-A\" over USB, card in");
    Subject worker(bench.worker(), {camera.folder() / "shots", "x", "disk"},
                   camera.environment_with_journal());
    worker.hear_until("READY|OK");
    worker.say("CONNECT\n");
    worker.hear_until("FILE_TYPE|jpeg");
    Subject echo(bench.program("bench_echo"));
    echo.hear_until("READY|OK");

    // On two cores the host looks for the line without sleeping: the time until it can be read is
    // the worker's, how long a sleeper takes to wake on another core is the machine's. On one core
    // it has to sleep to let the worker run.
    const auto next_line = cores == 1 ? &Subject::hear : &Subject::watch;
    Samples readable;
    Samples ways_in;
    Samples ways_out;
    const int files = bench.rounds(500, 100);
    for (int file = 0; file < files; ++file) {
        camera.tell("deliver \"DSC00001.JPG\" 0xFFFFFFFF\n");
        (worker.*next_line)();  // the log's line about it
        (worker.*next_line)();
        readable.push_back(now_in_microseconds());
        camera.await_answers(1);

        const OneWay way = measure_one_way(echo);
        ways_in.push_back(way.in);
        ways_out.push_back(way.out);
    }
    const std::vector<double> called =
        camera.journaled("OnCompleteDownload \"DSC00001.JPG\" 0xFFFFFFFF");
    if (called.size() != readable.size()) {
        give_up("the journal does not have every callback");
    }
    Samples times;
    for (std::size_t file = 0; file < called.size(); ++file) {
        times.push_back(readable[file] - called[file]);
    }
    bench.results.at_most(2, "Callback to DOWNLOADED" + on_cores(cores),
                          bench.ratio(times, ways_in), "of the echo's one way",
                          brief(bench.typical(times)) + " µs; echo " +
                              brief(bench.typical(ways_in)) + " in, " +
                              brief(bench.typical(ways_out)) + " out");
}
