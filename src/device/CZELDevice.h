#pragma once

#include "device/FrameDestination.h"
#include "platform/ComponentTypes.h"

namespace zel {

class CZELDeviceProperty;
class CZELObserver;
class COrvaneImage;

/// Device states of `GetStatus`.
enum DeviceState : LONG {
  kStateOpened = 0,
  kStatePlaying = 1,
  kStatePaused = 2,
  kStateStopped = 3,
  kStateClosed = 4,  ///< before the first `OpenCamera`; never reached again
};

/// Delivery modes of `SetBufferSamples`.
enum DeliveryMode : LONG {
  kDeliverCallback = 0,  ///< observer event for every frame
  kDeliverQueue = 1,     ///< two queued frames, taken by `GetData`
  kDeliverOnDemand = 2,  ///< each `GetData` reads and processes one frame; no worker threads
};

/// One camera. Operations return 1 for success and 0 for failure unless noted, and may be called from any
/// thread; `OpenCamera`, `Play`, `Pause` and `Stop` exclude each other. `CZELDeviceImpl` says what an
/// observer may call.
class CZELDevice {
 public:
  virtual LONG IsSataCamera() = 0;
  virtual LONG GetMaxCameraNum() = 0;                       ///< number of indexes to probe
  virtual LONG IsCameraValid(LONG index, LONG* valid) = 0;  ///< whether a free camera of this type answers
  virtual LONG IsCameraConnected(LONG* connected) = 0;      ///< whether the opened index still answers
  virtual LONG OpenCamera(LONG index) = 0;                  ///< state 0 afterwards, also when it failed
  virtual LONG GetCameraIndex() = 0;
  virtual LONG GetCameraID() = 0;
  virtual void SetObserver(CZELObserver* observer) = 0;  ///< not owned; null detaches
  virtual LONG SetBufferSamples(LONG value) = 0;         ///< `DeliveryMode`; returns it
  virtual LONG GetBufferSamples() = 0;
  virtual LONG SetKeepRawData(LONG value) = 0;  ///< keep each raw frame, from the next `Play` on
  virtual LONG GetKeepRawData() = 0;
  virtual COrvaneImage* GetImage() = 0;  ///< null unless capturing; gone with the end of the capture
  virtual LONG GetCameraType() = 0;      ///< 0..98
  /// One frame by the running capture's mode. A destination that the frame does not fit is E_FAIL, with
  /// nothing written and the frame still there; on demand nothing is copied at all.
  virtual HRESULT GetData(const FrameDestination& destination, LONG variantType) = 0;
  virtual LONG GetBitmapInfo(BITMAPINFOHEADER* header) = 0;
  virtual CZELDeviceProperty* GetProperty() = 0;  ///< owned by the device
  virtual LONG GetStatus() = 0;                   ///< `DeviceState`
  virtual LONG Play() = 0;
  virtual LONG Pause() = 0;
  virtual LONG Stop() = 0;
  virtual ~CZELDevice() = default;
};

}  // namespace zel
