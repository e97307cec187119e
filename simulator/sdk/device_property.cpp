// The one class of the SDK's surface that has bodies; any thread may make and read its objects.

#include "simulator/sdk/surface.h"

namespace SCRSDK {

CrDeviceProperty::CrDeviceProperty()
    : code_(0), value_type_(CrDataType_Undefined), value_(0), readable_(false) {}
CrDeviceProperty::~CrDeviceProperty() {}
CrDeviceProperty::CrDeviceProperty(const CrDeviceProperty&) = default;
CrDeviceProperty& CrDeviceProperty::operator=(const CrDeviceProperty&) = default;

void CrDeviceProperty::SetCode(CrInt32u code) {
    code_ = code;
}

CrInt32u CrDeviceProperty::GetCode() const {
    return code_;
}

void CrDeviceProperty::SetCurrentValue(CrInt64u value) {
    value_ = value;
}

CrInt64u CrDeviceProperty::GetCurrentValue() const {
    return value_;
}

void CrDeviceProperty::SetValueType(CrDataType type) {
    value_type_ = type;
}

CrDataType CrDeviceProperty::GetValueType() const {
    return value_type_;
}

bool CrDeviceProperty::IsGetEnableCurrentValue() const {
    return readable_;
}

void CrDeviceProperty::SetGetEnableCurrentValue(bool enabled) {
    readable_ = enabled;
}

}  // namespace SCRSDK
