#pragma once

// The callbacks: queued under the lock, called in order by threads of the SDK without it. There is
// one such thread; the prefix `second` of the scene language asks for another, `crowd` for eight.

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "simulator/sdk/lock.h"
#include "simulator/sdk/surface.h"

namespace camera_sim {

// Each goes to the application of the latest Connect; without one it is dropped.
namespace callback {
void connected(CrInt32 version) SIM_REQUIRES(g_lock);
void disconnected(CrInt32u reason) SIM_REQUIRES(g_lock);
void properties(std::vector<CrInt32u> codes) SIM_REQUIRES(g_lock);
void null_properties(CrInt32u count) SIM_REQUIRES(g_lock);
void download(std::optional<std::string> name, CrInt32u type) SIM_REQUIRES(g_lock);
void warning(CrInt32u code) SIM_REQUIRES(g_lock);
void error(CrInt32u code) SIM_REQUIRES(g_lock);
// Each of the eight threads reports as many files, THREAD-NUMBER.JPG, all threads at once.
void crowd(CrInt32u files) SIM_REQUIRES(g_lock);
}  // namespace callback

// The thread, 0 to 7, that callbacks come from which are queued now, and a choice of it for the
// length of a block in which the lock is not given up.
int delivering_thread() SIM_REQUIRES(g_lock);

class DeliveringThread {
  public:
    explicit DeliveringThread(int thread) SIM_REQUIRES(g_lock);
    ~DeliveringThread() SIM_ANNOTATION(no_thread_safety_analysis);
    DeliveringThread(const DeliveringThread&) = delete;
    DeliveringThread& operator=(const DeliveringThread&) = delete;

  private:
    const int before_;
};

// Both wait without the lock.
bool all_delivered() SIM_REQUIRES(g_lock);
void wait_for_delivery(Hold& hold) SIM_REQUIRES(g_lock);

void open_delivery() SIM_REQUIRES(g_lock);

// Delivers what is queued and ends the threads; what comes after that is dropped.
void end_delivery(Hold& hold) SIM_REQUIRES(g_lock);

}  // namespace camera_sim
