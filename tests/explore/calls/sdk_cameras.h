#pragma once

#include <cstddef>

namespace SCRSDK {
class ICrCameraObjectInfo;
}

namespace explore {

// Where a camera stands in the list that it was taken from.
std::size_t index_of(const SCRSDK::ICrCameraObjectInfo* info);

}  // namespace explore
