#include "tests/worker/crossings/points.h"

#include <cstdlib>
#include <ctime>
#include <dlfcn.h>
#include <new>
#include <pthread.h>
#include <utility>

namespace {

thread_local std::function<void(Point)>* t_visit = nullptr;
thread_local std::chrono::seconds t_forward{0};

void pass(Point point) {
    if (auto* const visit = std::exchange(t_visit, nullptr)) {
        (*visit)(point);
        t_visit = visit;
    }
}

// The function that this program's own definition hides.
template <typename Function>
Function* hidden(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

Visits::Visits(std::function<void(Point)> visit) : visit_(std::move(visit)) {
    t_visit = &visit_;
}

Visits::~Visits() {
    t_visit = nullptr;
}

void put_clock_forward(std::chrono::seconds time) {
    t_forward = time;
}

extern "C" {

int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
    static auto* const real = hidden<int(pthread_mutex_t*)>("pthread_mutex_lock");
    pass(Point::lock);
    return real(mutex);
}

int pthread_mutex_unlock(pthread_mutex_t* mutex) noexcept {
    static auto* const real = hidden<int(pthread_mutex_t*)>("pthread_mutex_unlock");
    const int result = real(mutex);
    pass(Point::unlocked);
    return result;
}

int pthread_cond_wait(pthread_cond_t* condition, pthread_mutex_t* mutex) {
    static auto* const real = hidden<int(pthread_cond_t*, pthread_mutex_t*)>("pthread_cond_wait");
    pass(Point::wait);
    return real(condition, mutex);
}

int clock_gettime(clockid_t clock, timespec* time) noexcept {
    static auto* const real = hidden<int(clockid_t, timespec*)>("clock_gettime");
    pass(Point::clock);
    const int result = real(clock, time);
    time->tv_sec += std::exchange(t_forward, std::chrono::seconds(0)).count();
    return result;
}

int nanosleep(const timespec* time, timespec* left) {
    static auto* const real = hidden<int(const timespec*, timespec*)>("nanosleep");
    pass(Point::sleep);
    return real(time, left);
}

}  // extern "C"

void* operator new(std::size_t size) {
    pass(Point::allocation);
    if (void* const memory = std::malloc(size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
