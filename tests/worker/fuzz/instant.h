// Time without waiting. The linker gives the worker's sleeps and its clock to this file
// (-Wl,--wrap): a sleep returns at once and puts the clock forward by as long as it would have
// taken.
#pragma once

#include <chrono>

class SonyWorker;

void put_clock_forward(std::chrono::nanoseconds time);

// One round of the watchdog, which never returns by itself.
void let_the_watchdog_look(SonyWorker& worker);
