// The process: signals, banner, SDK, threads, main loop, and out.
//
// Arguments: 1 the download folder, 3 the save destination word; 2 is not read. Status 0, or 1 when
// the SDK cannot be initialised.

#include <csignal>
#include <thread>

#include "program/dispatch.h"
#include "program/exit.h"
#include "program/reader.h"
#include "program/signals.h"
#include "program/standard_streams.h"
#include "program/transport_adapter.h"
#include "protocol/emit.h"
#include "session/sony_worker.h"
#include "threads/main_thread.h"

int main(int argc, char** argv) {
    main_thread.assume();
    prepare_standard_streams();

    const sigset_t signals = block_termination_signals();
    std::thread(signal_thread, signals).detach();

    emit("CPP_WORKER|START sony-1.0");
    report_transport_adapter();

    SonyWorker worker;
    if (argc >= 2) {
        worker.download_dir.publish(argv[1]);
    }
    if (argc >= 4) {
        worker.save_destination = argv[3];
    }
    if (!worker.init()) {
        give_up();
    }
    emit("READY|OK");

    std::thread(reader_thread).detach();
    std::thread(&SonyWorker::connect_watchdog_thread, &worker).detach();

    run_main_loop(worker);
    shut_down(worker);
}
