#pragma once

#include "api/ComObject.h"

namespace zel {

/// The catalogue: which camera types there are, and a camera of one of them.
class CZELBuilder final : public ComObject<IZELBuilder> {
 public:
  HRESULT CreateCamera(LONG lCameraType, IZELCamera** ppCamera) override;
  HRESULT GetCameraName(LONG lCameraType, BSTR* bstrName) override;
  HRESULT GetCameraTypeNum(LONG* lpCameraNum) override;
  HRESULT GetUsb3CameraType(LONG lIndex, LONG* lCameraType) override;
};

}  // namespace zel
