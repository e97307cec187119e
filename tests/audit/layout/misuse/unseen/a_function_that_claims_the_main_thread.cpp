#include "session/sdk.h"

void claim() ASSERT_CAPABILITY(main_thread);

void end_the_sdk() {
    claim();
    sdk::release();
}
