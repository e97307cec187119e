// Reading and writing properties, commands, and the folder for files.

#include <map>
#include <utility>
#include <vector>

#include "tests/worker/dialects/virtual_camera.h"

namespace {

// An array that was read: the application has the copy, and handing it back hands back the
// original.
struct Lent {
    std::vector<SCRSDK::CrDeviceProperty> copy;
    virtual_camera::CrDeviceProperty* original;
};

std::map<const SCRSDK::CrDeviceProperty*, Lent> lent;

SCRSDK::CrDeviceProperty in_this_dialect(const virtual_camera::CrDeviceProperty& original) {
    SCRSDK::CrDeviceProperty property;
    property.SetCode(static_cast<SCRSDK::CrPropertyCode>(original.GetCode()));
    property.SetGetEnableCurrentValue(original.IsGetEnableCurrentValue() ? 1 : 0);
    property.SetCurrentValue(original.GetCurrentValue());
    return property;
}

}  // namespace

namespace SCRSDK {

CrError GetSelectDeviceProperties(CrDeviceHandle handle, CrInt16u count,
                                  const CrPropertyCode* codes, CrDeviceProperty** properties,
                                  CrInt64* found) {
    std::vector<unsigned int> wanted;
    wanted.reserve(count);
    for (CrInt16u index = 0; index < count; ++index) {
        wanted.push_back(static_cast<unsigned int>(codes[index]));
    }
    virtual_camera::CrDeviceProperty* original = nullptr;
    int original_count = 0;
    const unsigned int result = virtual_camera::GetSelectDeviceProperties(
        handle, count, wanted.data(), &original, &original_count);
    *found = original_count;
    if (original != nullptr) {
        Lent array{{}, original};
        for (int index = 0; index < original_count; ++index) {
            array.copy.push_back(in_this_dialect(original[index]));
        }
        array.copy.emplace_back();  // an empty answer needs an address, too
        *properties = array.copy.data();
        lent.emplace(*properties, std::move(array));
    }
    return as_error(result);
}

void ReleaseDeviceProperties(CrDeviceHandle handle, const CrDeviceProperty* properties) {
    const auto array = lent.extract(properties);
    virtual_camera::ReleaseDeviceProperties(handle, array.mapped().original);
}

CrError SetDeviceProperty(CrDeviceHandle handle, const CrDeviceProperty* property) {
    virtual_camera::CrDeviceProperty original;
    original.SetCode(static_cast<unsigned int>(property->GetCode()));
    original.SetCurrentValue(property->GetCurrentValue());
    original.SetValueType(static_cast<virtual_camera::CrDataType>(property->GetValueType()));
    return as_error(virtual_camera::SetDeviceProperty(handle, &original));
}

CrError SendCommand(CrDeviceHandle handle, CrCommand command, CrCommandParameter parameter) {
    return as_error(virtual_camera::SendCommand(handle, static_cast<unsigned int>(command),
                                                static_cast<unsigned short>(parameter)));
}

CrError SetSaveInfo(CrDeviceHandle handle, const CrChar* folder, const CrChar* prefix,
                    CrInt64 number) {
    return as_error(virtual_camera::SetSaveInfo(
        handle, const_cast<char*>(folder), const_cast<char*>(prefix), static_cast<int>(number)));
}

}  // namespace SCRSDK
