// The camera's properties: the array of one that the SDK lends, and the one that the worker writes.

#pragma GCC visibility push(default)
#include <CRSDK/CameraRemote_SDK.h>
#pragma GCC visibility pop

#include "tests/explore/calls/sdk_call.h"
#include "tests/explore/scheduler.h"

using namespace explore;

namespace SCRSDK {

namespace {

constexpr std::uint64_t all_ones = ~std::uint64_t{0};
constexpr std::uint64_t other_value = 99;

CrDeviceProperty& lent_property() {
    static auto& property = *new CrDeviceProperty;
    return property;
}

void check_lent(const CrDeviceProperty* property) {
    if (property == &lent_property() && !camera.array_lent) {
        complain("a property is read after its array was handed back");
    }
}

}  // namespace

CrInt32u GetSelectDeviceProperties(CrDeviceHandle handle, CrInt32u count, CrInt32u* codes,
                                   CrDeviceProperty** properties, CrInt32* property_count) {
    if (count != 1 || camera.array_lent) {
        complain("GetSelectDeviceProperties is called wrongly");
    }
    const Answer answer = begin(Call::get_properties, *codes, 0, 0, handle);
    const std::uint32_t result = result_for(answer, handle);
    const CameraProperty& property = property_of(*codes);
    const Odd odd = answer.odd;
    const bool lends = result == 0 ? odd != Odd::null : odd == Odd::lent_on_failure;
    const bool readable = property.readable && odd != Odd::unreadable;
    const std::uint64_t value = odd == Odd::all_ones      ? all_ones
                                : odd == Odd::other_value ? other_value
                                                          : property.value;
    if (lends) {
        CrDeviceProperty& lent = lent_property();
        lent.SetCode(property.code);
        lent.SetCurrentValue(value);
        lent.SetGetEnableCurrentValue(readable);
        *properties = &lent;
        camera.array_lent = true;
    }
    *property_count = odd == Odd::empty ? 0 : 1;
    const bool can_be_read = lends && readable && odd != Odd::empty;
    end(Call::get_properties, result, value, can_be_read ? 0 : unreadable_text, lends);
    return result;
}

CrInt32u ReleaseDeviceProperties(CrDeviceHandle handle, CrDeviceProperty* properties) {
    if (!camera.array_lent) {
        complain("an array of properties is handed back twice");
    }
    if (properties != &lent_property()) {
        complain("an array of properties is handed back that was never lent");
    }
    const Answer answer = begin(Call::release_properties, 0, 0, 0, handle);
    camera.array_lent = false;
    end(Call::release_properties, answer.result);
    return answer.result;
}

CrInt32u SetDeviceProperty(CrDeviceHandle handle, CrDeviceProperty* property) {
    if (property->GetValueType() != CrDataType_UInt) {
        complain("a property is written with another type than 2");
    }
    const Answer answer =
        begin(Call::set_property, property->GetCode(), property->GetCurrentValue(), 0, handle);
    const std::uint32_t result = result_for(answer, handle);
    if (result == 0 && answer.odd != Odd::ignored) {
        property_of(property->GetCode()).value = property->GetCurrentValue();
    }
    end(Call::set_property, result);
    return result;
}

CrDeviceProperty::CrDeviceProperty()
    : code_(0), value_type_(CrDataType_Undefined), value_(0), readable_(false) {}
CrDeviceProperty::~CrDeviceProperty() {}
CrDeviceProperty::CrDeviceProperty(const CrDeviceProperty&) = default;
CrDeviceProperty& CrDeviceProperty::operator=(const CrDeviceProperty&) = default;

void CrDeviceProperty::SetCode(CrInt32u code) {
    code_ = code;
}
CrInt32u CrDeviceProperty::GetCode() const {
    check_lent(this);
    return code_;
}
void CrDeviceProperty::SetCurrentValue(CrInt64u value) {
    value_ = value;
}
CrInt64u CrDeviceProperty::GetCurrentValue() const {
    check_lent(this);
    return value_;
}
void CrDeviceProperty::SetValueType(CrDataType type) {
    value_type_ = type;
}
CrDataType CrDeviceProperty::GetValueType() const {
    return value_type_;
}
bool CrDeviceProperty::IsGetEnableCurrentValue() const {
    check_lent(this);
    return readable_;
}
void CrDeviceProperty::SetGetEnableCurrentValue(bool enabled) {
    readable_ = enabled;
}

}  // namespace SCRSDK
