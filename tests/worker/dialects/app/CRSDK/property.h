#pragma once

#include "CRSDK/numbers.h"

namespace SCRSDK {

struct CrDeviceProperty {
    void SetCode(CrPropertyCode code) noexcept {
        code_ = code;
    }
    CrPropertyCode GetCode() const noexcept {
        return code_;
    }
    void SetCurrentValue(CrInt64u value) noexcept {
        value_ = value;
    }
    CrInt64u GetCurrentValue() const noexcept {
        return value_;
    }
    void SetValueType(CrDataType type) noexcept {
        type_ = type;
    }
    CrDataType GetValueType() const noexcept {
        return type_;
    }
    CrInt32 IsGetEnableCurrentValue() const noexcept {
        return readable_;
    }
    void SetGetEnableCurrentValue(CrInt32 readable) noexcept {
        readable_ = readable;
    }

  private:
    CrInt64u value_ = 0;
    CrPropertyCode code_ = {};
    CrInt32 readable_ = 0;
    CrDataType type_ = CrDataType::undefined;
};

}  // namespace SCRSDK
