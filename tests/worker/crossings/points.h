// The points at which a thread of the worker can be made to wait for another: its calls of the C
// library's threads and clock, and its allocations. This program defines those functions itself and
// passes each call on.
#pragma once

#include <chrono>
#include <functional>

enum class Point { lock, unlocked, wait, clock, sleep, allocation };

// Calls `visit` on the thread that made this object, before each point that the thread passes
// (Point::unlocked: after it), until the object goes. Points inside the visit are passed silently.
class Visits {
  public:
    explicit Visits(std::function<void(Point)> visit);
    ~Visits();
    Visits(const Visits&) = delete;
    Visits& operator=(const Visits&) = delete;

  private:
    std::function<void(Point)> visit_;
};

// For a visit of Point::clock: the reading that follows is this much later than the truth.
void put_clock_forward(std::chrono::seconds time);
