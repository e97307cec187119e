#include "session/sdk.h"

void end_the_sdk() {
    void (*const end)() = sdk::release;
    end();
}
