#include "api/CZELBuilder.h"

#include "api/CZELCamera.h"
#include "models/Factory.h"
#include "models/ModelTable.h"
#include "transport/usb3/DiskIdentification.h"

namespace zel {
namespace {

bool IsCameraType(LONG type) {
  return type >= 0 && type < kModelCount;
}

}  // namespace

HRESULT CZELBuilder::CreateCamera(LONG lCameraType, IZELCamera** ppCamera) {
  return Guarded(
      [&]() -> HRESULT {
        if (!IsCameraType(lCameraType) || !ppCamera) return E_INVALIDARG;
        std::unique_ptr<CZELDevice> device(CreateDeviceForType(static_cast<std::uint32_t>(lCameraType)));
        if (!device) return E_INVALIDARG;
        const auto camera = NewObject<CZELCamera>();
        if (!camera) return E_INVALIDARG;
        const HRESULT result =
            camera->QueryInterface(__uuidof(IZELCamera), reinterpret_cast<void**>(ppCamera));
        camera->Attach(std::move(device));
        return result;
      },
      E_INVALIDARG);
}

HRESULT CZELBuilder::GetCameraName(LONG lCameraType, BSTR* bstrName) {
  return Guarded([&]() -> HRESULT {
    if (!IsCameraType(lCameraType) || !bstrName) return E_INVALIDARG;
    const std::u16string name = DisplayNameUtf16(lCameraType);
    *bstrName = SysAllocString(reinterpret_cast<const OLECHAR*>(name.c_str()));
    return *bstrName ? S_OK : E_OUTOFMEMORY;
  });
}

HRESULT CZELBuilder::GetCameraTypeNum(LONG* lpCameraNum) {
  Put(lpCameraNum, kModelCount);
  return kModelCount;
}

HRESULT CZELBuilder::GetUsb3CameraType(LONG lIndex, LONG* lCameraType) {
  const LONG type = Guarded([&]() -> HRESULT { return IdentifyDiskCamera(lIndex); }, kUnknownCameraType);
  Put(lCameraType, type);
  return type;
}

}  // namespace zel
