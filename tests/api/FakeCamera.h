#pragma once

#include <functional>
#include <string>
#include <vector>

#include "api/CZELCamera.h"
#include "api/TestSink.h"
#include "device/CZELObserver.h"
#include "property/CZELDevicePropertyImpl.h"

namespace zel::test {

constexpr LONG kUntouched = 0x5A5A5A5A;  ///< what out parameters hold before a call

/// A store whose answers the test sets, for the operations that stand for the forms of the facade.
class FakeStore : public CZELDevicePropertyImpl {
 public:
  HRESULT result = S_OK;
  LONG value = 0;
  PropertyRecord record;
  std::string calls;
  std::function<void()> during;  ///< what happens while SetShutter is under way

  HRESULT SetShutter(LONG v) override {
    if (during) during();
    return Called("SetShutter " + std::to_string(v));
  }
  HRESULT GetShutter(LONG* out) override { return Write(out); }
  HRESULT GetShutterRange(LONG* low, LONG* high) override {
    if (SUCCEEDED(result)) *low = 3, *high = 4;
    return result;
  }
  HRESULT GetPropertyInfo(LONG, PropertyRecord* out) override {
    *out = record;
    return result;
  }
  HRESULT GetROI(LONG* x, LONG* y, LONG* w, LONG* h) override {
    if (SUCCEEDED(result)) *x = 1, *y = 2, *w = 3, *h = 4;
    return result;
  }
  HRESULT IsPropertySupported(LONG id) override {
    return Called("IsPropertySupported " + std::to_string(id));
  }
  HRESULT GetProgrammableGamma(LONG, LONG* out) override { return Write(out); }
  HRESULT SetSharpness(LONG v) override { return Called("SetSharpness " + std::to_string(v)); }
  HRESULT GetSharpness(LONG* out) override { return Write(out); }
  HRESULT SetRegisterB(unsigned char a, unsigned char v) override {
    return Called("SetRegisterB " + std::to_string(a) + " " + std::to_string(v));
  }
  HRESULT GetRegisterEx(LONG address, LONG* out, LONG mode) override {
    Called("GetRegisterEx " + std::to_string(address) + " mode " + std::to_string(mode));
    return Write(out);
  }
  HRESULT SetRegisterEx(LONG mode, LONG address, LONG v) override {
    return Called("SetRegisterEx " + std::to_string(mode) + " " + std::to_string(address) + " " +
                  std::to_string(v));
  }

 private:
  HRESULT Called(const std::string& text) {
    calls += text + ";";
    return result;
  }
  HRESULT Write(LONG* out) {
    *out = value;
    return result;
  }
};

/// A device that answers what the test sets and tells its observer what the test wants.
class FakeDevice : public CZELDevice {
 public:
  explicit FakeDevice(std::string* log = nullptr) : log_(log) {}
  ~FakeDevice() override {
    Tell(kEventStateChanged, nullptr);
    if (log_) *log_ += "deleted;";
  }

  LONG answer = 1;  ///< of every operation that has no field of its own
  LONG status = kStateClosed;
  LONG bufferSamples = kDeliverCallback;
  HRESULT dataResult = S_OK;
  std::vector<unsigned char> frame;  ///< what GetData copies
  COrvaneImage* image = nullptr;
  LONG lastVariantType = 0;
  void* lastDestination = nullptr;
  FakeStore store;

  void Tell(LONG event, void* param) {
    if (observer) observer->Notify(event, param, this);
  }

  LONG IsSataCamera() override { return answer; }
  LONG GetMaxCameraNum() override { return answer; }
  LONG IsCameraValid(LONG, LONG* valid) override {
    *valid = 77;
    return answer;
  }
  LONG IsCameraConnected(LONG* connected) override {
    *connected = 77;
    return answer;
  }
  LONG OpenCamera(LONG) override { return answer; }
  LONG GetCameraIndex() override { return answer; }
  LONG GetCameraID() override { return answer; }
  void SetObserver(CZELObserver* o) override { observer = o; }
  LONG SetBufferSamples(LONG v) override { return bufferSamples = v; }
  LONG GetBufferSamples() override { return bufferSamples; }
  LONG SetKeepRawData(LONG) override { return 0; }
  LONG GetKeepRawData() override { return 0; }
  COrvaneImage* GetImage() override { return image; }
  LONG GetCameraType() override { return answer; }
  HRESULT GetData(void* destination, LONG variantType) override {
    lastVariantType = variantType;
    lastDestination = destination;
    if (destination) std::copy(frame.begin(), frame.end(), static_cast<unsigned char*>(destination));
    return dataResult;
  }
  LONG GetBitmapInfo(BITMAPINFOHEADER*) override { return 0; }
  CZELDeviceProperty* GetProperty() override { return &store; }
  LONG GetStatus() override { return status; }
  LONG Play() override { return answer; }
  LONG Pause() override { return answer; }
  LONG Stop() override {
    if (log_) *log_ += "stopped;";
    return answer;
  }

  CZELObserver* observer = nullptr;

 private:
  std::string* log_;
};

struct CameraWithDevice {
  explicit CameraWithDevice(std::string* log = nullptr)
      : camera(NewObject<CZELCamera>()), device(new FakeDevice(log)) {
    camera->Attach(std::unique_ptr<CZELDevice>(device));
  }
  ComPtr<CZELCamera> camera;
  FakeDevice* device;  ///< the camera's
};

/// The camera's own settings object.
inline ComPtr<IZELProperty> SettingsOf(IZELCamera& camera) {
  IZELProperty* settings = nullptr;
  camera.GetProperty(&settings);
  return ComPtr<IZELProperty>::Adopt(settings);
}

/// A one-dimensional array in a VARIANT, freed at its end.
class ArrayVariant {
 public:
  explicit ArrayVariant(std::size_t bytes) {
    VariantInit(&variant);
    variant.vt = VT_ARRAY | VT_UI1;
    variant.parray = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes));
  }
  ~ArrayVariant() { SafeArrayDestroy(variant.parray); }
  ArrayVariant(const ArrayVariant&) = delete;
  ArrayVariant& operator=(const ArrayVariant&) = delete;

  unsigned char* Data() { return static_cast<unsigned char*>(variant.parray->pvData); }
  /// The same array by reference.
  VARIANT Reference() {
    VARIANT reference;
    VariantInit(&reference);
    reference.vt = VT_BYREF | VT_ARRAY | VT_UI1;
    reference.byref = &variant.parray;
    return reference;
  }

  VARIANT variant;
};

}  // namespace zel::test
