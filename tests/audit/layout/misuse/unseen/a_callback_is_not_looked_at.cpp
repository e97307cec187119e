#include "session/sony_worker.h"

NO_THREAD_SAFETY_ANALYSIS void end_the_sdk() {
    sdk::release();
}
