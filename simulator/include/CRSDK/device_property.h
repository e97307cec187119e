#pragma once

// Device properties, as the simulated camera has them.

#include "types.h"

namespace SCRSDK {

// One camera setting: a code and its value. Written through SetDeviceProperty, read as an element
// of the array that GetSelectDeviceProperties lends.
class CrDeviceProperty {
  public:
    CrDeviceProperty();
    ~CrDeviceProperty();
    CrDeviceProperty(const CrDeviceProperty&);
    CrDeviceProperty& operator=(const CrDeviceProperty&);

    void SetCode(CrInt32u code);
    CrInt32u GetCode() const;
    void SetCurrentValue(CrInt64u value);
    CrInt64u GetCurrentValue() const;
    void SetValueType(CrDataType type);
    CrDataType GetValueType() const;

    // Whether GetCurrentValue may be asked; the camera withholds some values in some states.
    bool IsGetEnableCurrentValue() const;
    void SetGetEnableCurrentValue(bool enabled);

  private:
    CrInt32u code_;
    CrDataType value_type_;
    CrInt64u value_;
    bool readable_;
};

}  // namespace SCRSDK
