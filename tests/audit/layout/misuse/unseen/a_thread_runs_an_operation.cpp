#include <thread>

#include "session/sdk.h"

void end_the_sdk() {
    std::thread(sdk::release).detach();
}
