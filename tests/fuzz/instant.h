// Time without waiting. The linker gives the worker's sleeps and its clock to this file
// (-Wl,--wrap): a sleep returns at once and puts the clock forward by as long as it would have
// taken.
#pragma once

#include <chrono>

void put_clock_forward(std::chrono::nanoseconds time);

// How many sleeps there may still be; the next one leaves by an Interrupted. A loop that sleeps
// for ever can be run for some rounds that way.
struct Interrupted {};
void allow_sleeps(unsigned number);
void allow_all_sleeps();
