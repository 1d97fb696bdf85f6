#include "api/CZELCamera.h"

#include <limits>

#include "api/CZELProperty.h"
#include "api/VariantPixels.h"
#include "platform/Threads.h"

namespace zel {
namespace {

/// Ends a device. Inside a sink's event that happens on another thread, as the one that calls the sink may be
/// the device's own worker, which its end waits for.
void EndDevice(CZELDevice* device, const std::shared_ptr<CZELCameraObserver>& observer) {
  if (!CZELCameraObserver::IsNotifying()) return delete device;
  try {
    LockModule();
    StartDetached([device, listener = observer]() mutable {
      delete device;
      listener.reset();
      UnlockModule();
    });
  } catch (...) {
    // No thread to be had: the device stays, stopped and silent, rather than waiting for itself for ever.
    device->SetObserver(nullptr);
    UnlockModule();
  }
}

/// Where `GetData` copies to. `type` is the kind of destination, 0 for a variant that is none; an array
/// brings its size, of a plain address only the caller knows it.
struct Destination {
  LONG type = 0;
  PixelMemory memory;
};

Destination DestinationOf(const VARIANT& argument) {
  const VARIANT& variant = Dereferenced(argument);
  if (variant.vt & VT_ARRAY) return {VT_ARRAY, WritableArrayOf(variant)};
  if (variant.vt & VT_BYREF) return {VT_BYREF, {static_cast<std::uint8_t*>(variant.byref), UINT64_MAX}};
  return {};
}

HRESULT TakeFrame(CZELDevice& device, const Destination& destination) {
  const PixelMemory& memory = destination.memory;
  return memory.data ? device.GetData({memory.data, memory.size}, destination.type) : E_FAIL;
}

/// For scripts, which cannot make an array of bytes themselves. On demand, where nothing is copied, the
/// variable stays as it is.
HRESULT TakeFrameIntoNewArray(CZELDevice& device, VARIANT& variable) {
  VARIANT frame;
  VariantInit(&frame);
  const FrameDestination::Maker make = [&frame](std::uint64_t bytes) -> void* {
    if (bytes > std::numeric_limits<ULONG>::max()) return nullptr;
    frame.parray = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes));
    if (!frame.parray) return nullptr;
    frame.vt = VT_ARRAY | VT_UI1;
    return frame.parray->pvData;
  };
  const HRESULT result = device.GetData(FrameDestination(make), VT_ARRAY);
  if (frame.vt == VT_EMPTY) return result;
  if (FAILED(result)) {
    VariantClear(&frame);
  } else {
    variable = frame;
  }
  return result;
}

}  // namespace

CZELCamera::CZELCamera()
    : bitmapHeader_{.biSize = sizeof(BITMAPINFOHEADER),
                    .biWidth = 0,
                    .biHeight = 0,
                    .biPlanes = 1,
                    .biBitCount = 32,
                    .biCompression = 0,
                    .biSizeImage = 0,
                    .biXPelsPerMeter = 3780,
                    .biYPelsPerMeter = 3780,
                    .biClrUsed = 0,
                    .biClrImportant = 0} {}

CZELCamera::~CZELCamera() {
  if (const auto device = Device()) device->Stop();
  link_->Cut();
}

void CZELCamera::Attach(std::unique_ptr<CZELDevice> device) {
  link_->Attach(
      {device.release(), [observer = observer_](CZELDevice* ended) { EndDevice(ended, observer); }});
}

HRESULT CZELCamera::IsSataCamera(LONG* lpIsSata) {
  return Guarded([&]() -> HRESULT {
    const auto device = Device();
    Put(lpIsSata, !device ? LONG{E_HANDLE} : device->IsSataCamera() != 0 ? 1 : 0);
    return device ? device->IsSataCamera() : E_HANDLE;
  });
}

HRESULT CZELCamera::GetMaxCameraNum(LONG* lpNum) {
  return Guarded([&]() -> HRESULT {
    const auto device = Device();
    Put(lpNum, device ? device->GetMaxCameraNum() : LONG{E_HANDLE});
    return device ? device->GetMaxCameraNum() : E_HANDLE;
  });
}

HRESULT CZELCamera::IsCameraValid(LONG lCameraNo, LONG* lpValid) {
  return Guarded([&]() -> HRESULT {
    const auto device = Device();
    if (!device) return E_HANDLE;
    LONG valid = 0;
    const HRESULT result = device->IsCameraValid(lCameraNo, &valid) ? S_OK : E_FAIL;
    Put(lpValid, LONG{result});
    return result;
  });
}

HRESULT CZELCamera::OpenCamera(LONG lCameraNo, LONG* lpRet) {
  return Guarded([&]() -> HRESULT {
    const auto device = Device();
    if (!device) return E_HANDLE;
    const HRESULT result = device->OpenCamera(lCameraNo) == 1 ? S_OK : E_HANDLE;
    Put(lpRet, LONG{result});
    return result;
  });
}

HRESULT CZELCamera::GetCameraType(LONG* lpType) {
  return Guarded([&]() -> HRESULT {
    const auto device = Device();
    Put(lpType, device ? device->GetCameraType() : LONG{E_HANDLE});
    return device ? device->GetCameraType() : E_HANDLE;
  });
}

HRESULT CZELCamera::Play(LONG* lpRet) {
  return Command(&CZELDevice::Play, lpRet);
}
HRESULT CZELCamera::Pause(LONG* lpRet) {
  return Command(&CZELDevice::Pause, lpRet);
}
HRESULT CZELCamera::Stop(LONG* lpRet) {
  return Command(&CZELDevice::Stop, lpRet);
}

HRESULT CZELCamera::Command(Operation operation, LONG* lpRet) {
  return Guarded([&]() -> HRESULT {
    const auto device = Device();
    if (!device) return E_HANDLE;
    const HRESULT result = (device.get()->*operation)() ? S_OK : E_FAIL;
    Put(lpRet, LONG{result});
    return result;
  });
}

HRESULT CZELCamera::GetProperty(IZELProperty** ppProperty) {
  return Guarded([&]() -> HRESULT {
    if (!Device()) return E_HANDLE;
    const auto facade = NewObject<CZELProperty>();
    if (!facade) return E_FAIL;
    facade->QueryInterface(__uuidof(IZELProperty), reinterpret_cast<void**>(ppProperty));
    facade->Bind(link_);
    return S_OK;
  });
}

HRESULT CZELCamera::GetData(VARIANT Bits, LONG* lpRet) {
  return Guarded([&]() -> HRESULT {
    const auto device = Device();
    if (!device) return E_HANDLE;
    VARIANT* const empty = EmptyVariable(Bits);
    const Destination destination = DestinationOf(Bits);
    if (!empty && destination.type == 0) return E_FAIL;
    const HRESULT result = empty ? TakeFrameIntoNewArray(*device, *empty) : TakeFrame(*device, destination);
    Put(lpRet, LONG{result});
    return result;
  });
}

template <class Sink>
HRESULT CZELCamera::SetSink(Sink* sink) {
  return Guarded([&]() -> HRESULT {
    const auto device = Device();
    if (!device) return E_HANDLE;
    auto& slot = observer_->Slot(sink);
    if (sink) {
      slot.Set(sink);
      device->SetObserver(observer_.get());
    } else if (slot.IsSet()) {
      device->SetObserver(nullptr);
      slot.Clear();
    }
    return S_OK;
  });
}

HRESULT CZELCamera::SetObserver(IZELGrabberCB* pObserver) {
  return SetSink(pObserver);
}
HRESULT CZELCamera::SetObserverNet(IZELGrabberCBNet* pObserver) {
  return SetSink(pObserver);
}

HRESULT CZELCamera::GetStatus(LONG* lStatus) {
  return Guarded([&]() -> HRESULT {
    const auto device = Device();
    if (!device) return E_HANDLE;
    const LONG status = device->GetStatus();
    Put(lStatus, status);
    return status;
  });
}

HRESULT CZELCamera::SetBufferSamples(LONG lBufferSample) {
  return Guarded([&]() -> HRESULT {
    if (const auto device = Device()) device->SetBufferSamples(lBufferSample);
    return S_OK;
  });
}

HRESULT CZELCamera::GetBufferSamples(LONG* lBufferSamples) {
  return Guarded([&]() -> HRESULT {
    const auto device = Device();
    if (!device) return E_HANDLE;
    const LONG samples = device->GetBufferSamples();
    Put(lBufferSamples, samples);
    return samples;
  });
}

HRESULT CZELCamera::GetCameraID(LONG* lpID) {
  return Guarded([&]() -> HRESULT {
    const auto device = Device();
    Put(lpID, device ? device->GetCameraID() : 0);
    return device ? device->GetCameraID() : S_OK;
  });
}

HRESULT CZELCamera::IsCameraConnected(LONG* lpConnected) {
  return Guarded([&]() -> HRESULT {
    const auto device = Device();
    if (!device) return S_OK;
    LONG connected = 0;
    const LONG result = device->IsCameraConnected(&connected);
    Put(lpConnected, result);
    return result;
  });
}

CZELDevice* DeviceOf(IZELCamera* camera) {
  auto* const own = dynamic_cast<CZELCamera*>(camera);
  return own ? own->Device().get() : nullptr;
}

}  // namespace zel
