#include "session/sdk.h"

const char* name_of(const sdk::Camera& camera) {
    const auto name = &sdk::Camera::model;
    return (camera.*name)();
}
