#pragma once

#include <memory>

#include "api/CZELCameraObserver.h"
#include "api/ComObject.h"
#include "api/DeviceLink.h"

namespace zel {

/// One camera for an application. Without a device (created by itself, not by the catalogue) it can still
/// draw, resample and save.
class CZELCamera final : public ComObject<IZELCamera> {
 public:
  CZELCamera();
  ~CZELCamera() override;

  /// Once, before the camera is handed out. The camera closes and deletes the device at its end; a call still
  /// under way in a property facade puts that off until it returns.
  void Attach(std::unique_ptr<CZELDevice> device);
  std::shared_ptr<CZELDevice> Device() const { return link_->Device(); }

  HRESULT IsSataCamera(LONG* lpIsSata) override;
  HRESULT GetMaxCameraNum(LONG* lpNum) override;
  HRESULT IsCameraValid(LONG lCameraNo, LONG* lpValid) override;
  HRESULT OpenCamera(LONG lCameraNo, LONG* lpRet) override;
  HRESULT GetCameraType(LONG* lpType) override;
  HRESULT Play(LONG* lpRet) override;
  HRESULT Pause(LONG* lpRet) override;
  HRESULT Stop(LONG* lpRet) override;
  HRESULT GetProperty(IZELProperty** ppProperty) override;
  HRESULT GetData(VARIANT Bits, LONG* lpRet) override;
  HRESULT SetObserver(IZELGrabberCB* pObserver) override;
  HRESULT StretchDIBits(LONG hDC, LONG Width, LONG Height, VARIANT vtBits) override;
  HRESULT GetStatus(LONG* lStatus) override;
  HRESULT SetBufferSamples(LONG lBufferSample) override;
  HRESULT GetBufferSamples(LONG* lBufferSamples) override;
  HRESULT SetDIBits(LONG hDC, LONG Width, LONG Height, VARIANT vtBits) override;
  HRESULT Resample(VARIANT vtSrc, LONG lSrcWidth, LONG lSrcHeight, VARIANT vtDst, LONG lDstWidth,
                   LONG lDstHeight, LONG lMethod) override;
  HRESULT SetObserverNet(IZELGrabberCBNet* pObserver) override;
  HRESULT SaveImage(BSTR bstrFilename, VARIANT vtBits, LONG lWidth, LONG lHeight, LONG lBitCount,
                    LONG lStride, LONG lFormat, LONG lGray) override;
  HRESULT GetCameraID(LONG* lpID) override;
  HRESULT IsCameraConnected(LONG* lpConnected) override;

 private:
  using Operation = LONG (CZELDevice::*)();

  HRESULT Command(Operation operation, LONG* lpRet);
  template <class Sink>
  HRESULT SetSink(Sink* sink);
  /// The header for 32-bit pixels of this size; a negative height means top row first.
  const BITMAPINFOHEADER& DescribeBits(LONG width, LONG height);

  BITMAPINFOHEADER bitmapHeader_;
  const std::shared_ptr<DeviceLink> link_ = std::make_shared<DeviceLink>();
  // Shared with the device's end: the device tells it of its own deletion.
  const std::shared_ptr<CZELCameraObserver> observer_ = std::make_shared<CZELCameraObserver>();
};

/// The device behind a camera object of this library, null when it has none; valid as long as the camera.
/// For the tools built into the library's own tree.
CZELDevice* DeviceOf(IZELCamera* camera);

}  // namespace zel
