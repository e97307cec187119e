#include "session/sdk.h"

struct Found {
    sdk::CameraList cameras;
};

void look_on_any_thread() {
    Found found;
}
