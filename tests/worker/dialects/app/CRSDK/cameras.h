#pragma once

#include "CRSDK/numbers.h"

namespace SCRSDK {

struct ICrCameraObjectInfo {
    virtual CrInt32u GetNameSize() const noexcept = 0;
    virtual CrChar* GetModel() = 0;
    virtual CrInt32u GetConnectionTypeNameSize() const noexcept = 0;
    virtual const CrChar* GetConnectionTypeName() const noexcept = 0;
};

struct ICrEnumCameraObjectInfo {
    virtual CrInt16u GetCount() = 0;
    virtual const ICrCameraObjectInfo* GetCameraObjectInfo(CrInt16u index) = 0;
    virtual CrError Release() noexcept = 0;
};

}  // namespace SCRSDK
