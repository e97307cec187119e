#pragma once

// What an application is told, as the simulated camera tells it.

#include "types.h"

namespace SCRSDK {

struct CrOperationResultData;

// What the application gives to Connect. The SDK calls these on threads of its own, at any time
// from Connect until Release has returned. Every operation has an empty body: override what you
// need. There is no virtual destructor; the SDK never deletes the object.
class IDeviceCallback {
  public:
    virtual void OnConnected(DeviceConnectionVersioin /*version*/) {}
    virtual void OnDisconnected(CrInt32u /*error*/) {}
    virtual void OnPropertyChanged() {}
    virtual void OnPropertyChangedCodes(CrInt32u /*count*/, CrInt32u* /*codes*/) {}
    virtual void OnLvPropertyChanged() {}
    virtual void OnLvPropertyChangedCodes(CrInt32u /*count*/, CrInt32u* /*codes*/) {}
    virtual void OnCompleteDownload(CrChar* /*file_name*/, CrInt32u /*type*/) {}
    virtual void OnNotifyContentsTransfer(CrInt32u /*notify*/, CrInt32u /*handle*/,
                                          CrChar* /*file_name*/) {}
    virtual void OnCompleteOperation(CrInt32u /*operation*/, CrOperationResultData* /*data*/) {}
    virtual void OnWarning(CrInt32u /*warning*/) {}
    virtual void OnWarningExt(CrInt32u /*warning*/, CrInt32 /*param1*/, CrInt32 /*param2*/,
                              CrInt32 /*param3*/) {}
    virtual void OnError(CrInt32u /*error*/) {}
    virtual void OnNotifyFTPTransferResult(CrInt32u /*notify*/, CrInt32u /*succeeded*/,
                                           CrInt32u /*failed*/) {}
    virtual void OnNotifyRemoteTransferResult(CrInt32u /*notify*/, CrInt32u /*percent*/,
                                              CrChar* /*file_name*/) {}
    virtual void OnNotifyRemoteTransferResult(CrInt32u /*notify*/, CrInt32u /*percent*/,
                                              CrInt8u* /*data*/, CrInt64u /*size*/) {}
    virtual void OnNotifyRemoteTransferContentsListChanged(CrInt32u /*notify*/, CrInt32u /*slot*/,
                                                           CrInt32u /*added*/) {}
    virtual void OnNotifyRemoteFirmwareUpdateResult(CrInt32u /*notify*/,
                                                    const void* /*parameter*/) {}
    virtual void OnReceivePlaybackTimeCode(CrInt32u /*time_code*/) {}
    virtual void OnReceivePlaybackData(CrInt8u /*type*/, CrInt32 /*size*/, CrInt8u* /*data*/,
                                       CrInt64 /*pts*/, CrInt64 /*dts*/, CrInt32 /*param1*/,
                                       CrInt32 /*param2*/) {}
    virtual void OnNotifyMonitorUpdated(CrInt32u /*type*/, CrInt32u /*frame*/) {}
    virtual void OnNotifyPostViewImage(CrChar* /*file_name*/, CrInt32u /*size*/) {}
};

}  // namespace SCRSDK
