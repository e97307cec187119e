// The data of the host's side within reach of a misuse: what it includes itself comes first, as it
// is.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <thread>
#include <utility>
#include <vector>

#define private public
#include "host/process/worker_process.h"
#include "tether/conversation/events.h"
#undef private
