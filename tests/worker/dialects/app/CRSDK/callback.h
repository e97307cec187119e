#pragma once

#include "CRSDK/numbers.h"

namespace SCRSDK {

class CrOperationResultData;

// Declared in another order, too: only names count.
class IDeviceCallback {
  public:
    virtual ~IDeviceCallback() = default;

    virtual void OnError(CrError) {}
    virtual void OnWarning(CrWarning) {}
    virtual void OnWarningExt(CrWarning, CrInt32, CrInt32, CrInt32) {}
    virtual void OnConnected(DeviceConnectionVersioin) {}
    virtual void OnDisconnected(CrDisconnectReason) {}

    virtual void OnPropertyChanged() {}
    virtual void OnPropertyChangedCodes(CrInt16u, const CrPropertyCode*) {}
    virtual void OnLvPropertyChanged() {}
    virtual void OnLvPropertyChangedCodes(CrInt16u, const CrPropertyCode*) {}

    virtual void OnCompleteDownload(const CrChar*, CrDownloadKind) {}
    virtual void OnNotifyContentsTransfer(CrInt32u, CrInt32u, const CrChar*) {}
    virtual void OnNotifyPostViewImage(const CrChar*, CrInt32u) {}
    virtual void OnCompleteOperation(CrCommand, CrOperationResultData*) {}
    virtual void OnNotifyFTPTransferResult(CrInt32u, CrInt32u, CrInt32u) {}
    virtual void OnNotifyRemoteTransferResult(CrInt32u, CrInt32u, const CrChar*) {}
    virtual void OnNotifyRemoteTransferResult(CrInt32u, CrInt32u, const CrInt8u*, CrInt64u) {}
    virtual void OnNotifyRemoteTransferContentsListChanged(CrInt32u, CrInt32u, CrInt32u) {}
    virtual void OnNotifyRemoteFirmwareUpdateResult(CrInt32u, const void*) {}
    virtual void OnReceivePlaybackTimeCode(CrInt32u) {}
    virtual void OnReceivePlaybackData(CrInt8u, CrInt32, const CrInt8u*, CrInt64, CrInt64, CrInt32,
                                       CrInt32) {}
    virtual void OnNotifyMonitorUpdated(CrInt32u, CrInt32u) {}
};

}  // namespace SCRSDK
