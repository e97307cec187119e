#include <thread>

#include "session/sony_worker.h"

void check_the_card(SonyWorker& worker) {
    std::thread(&SonyWorker::card_check, &worker).detach();
}
