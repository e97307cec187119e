#include "tests/worker/fuzz/drawn_camera.h"

#include "tests/worker/fuzz/require.h"

using namespace SCRSDK;

namespace {

std::optional<std::string> text_or_null(Bytes& bytes) {
    return bytes.yes() ? std::optional(bytes.text(12)) : std::nullopt;
}

}  // namespace

DrawnCamera::DrawnCamera(Bytes& bytes)
    : model_(text_or_null(bytes)), type_(bytes.yes() ? "USB" : text_or_null(bytes)) {}

const CrChar* DrawnCamera::GetModel() const {
    return model_ ? model_->c_str() : nullptr;
}

const CrChar* DrawnCamera::GetConnectionTypeName() const {
    return type_ ? type_->c_str() : nullptr;
}

DrawnList::DrawnList(Bytes& bytes, std::set<const DrawnList*>& lent)
    : lent_(lent), count_(bytes.number(4)) {
    for (unsigned left = bytes.number(3); left > 0; --left) {
        cameras_.push_back(bytes.number(7) == 0 ? nullptr : std::make_unique<DrawnCamera>(bytes));
    }
    lent_.insert(this);
}

CrInt32u DrawnList::GetCount() const {
    return count_;
}

ICrCameraObjectInfo* DrawnList::GetCameraObjectInfo(CrInt32u index) const {
    require(index < count_, "no camera is asked for beyond the list");
    return index < cameras_.size() ? cameras_[index].get() : nullptr;
}

void DrawnList::Release() {
    lent_.erase(this);
    delete this;
}

void call_back(IDeviceCallback& application, Bytes& bytes) {
    switch (bytes.number(6)) {
        case 0:
            application.OnConnected(static_cast<DeviceConnectionVersioin>(bytes.code()));
            break;
        case 1:
            application.OnDisconnected(bytes.code());
            break;
        case 2:
            application.OnWarning(bytes.code());
            break;
        case 3:
            application.OnError(bytes.code());
            break;
        case 4: {
            std::string name = bytes.text(12);
            const CrInt32u type = bytes.yes() ? 0xFFFFFFFF : bytes.code();
            application.OnCompleteDownload(bytes.number(7) == 0 ? nullptr : name.data(), type);
            break;
        }
        case 5: {
            // As large as it says, so that a look beyond its end is found.
            std::vector<CrInt32u> codes(bytes.number(5));
            for (CrInt32u& code : codes) {
                code = bytes.code();
            }
            application.OnPropertyChangedCodes(static_cast<CrInt32u>(codes.size()), codes.data());
            break;
        }
        default:
            application.OnPropertyChangedCodes(bytes.code(), nullptr);
    }
}
