#pragma once

// What an enumeration of cameras is made of, as the simulated camera provides it.

#include "types.h"

namespace SCRSDK {

// One camera that an enumeration found. Belongs to the enumeration and lives as long as it.
class ICrCameraObjectInfo {
  public:
    virtual const CrChar* GetModel() const = 0;  // null: the camera gave none
    virtual const CrChar* GetConnectionTypeName()
        const = 0;  // "USB" for a camera on USB; null: unknown

  protected:
    ~ICrCameraObjectInfo() = default;
};

// What EnumCameraObjects lends; handed back with Release.
class ICrEnumCameraObjectInfo {
  public:
    virtual CrInt32u GetCount() const = 0;
    virtual ICrCameraObjectInfo* GetCameraObjectInfo(CrInt32u index) const = 0;
    virtual void Release() = 0;

  protected:
    ~ICrEnumCameraObjectInfo() = default;
};

}  // namespace SCRSDK
