#pragma once

#include <memory>
#include <string>

#include "api/CZELCamera.h"
#include "api/RecordingStore.h"
#include "api/TestSink.h"
#include "device/CZELObserver.h"

namespace zel::test {

constexpr LONG kUntouched = 0x5A5A5A5A;  ///< what out parameters hold before a call

/// A device that writes down what it is asked and has its own answer to every question, times `factor`. It
/// tells its observer what the test wants.
class FakeDevice : public CZELDevice {
 public:
  explicit FakeDevice(std::string* log = nullptr) : log_(log) {}
  ~FakeDevice() override {
    Tell(kEventStateChanged, nullptr);
    if (log_) *log_ += "deleted;";
  }

  LONG factor = 1;
  std::string calls;  ///< "NAME ARGUMENT;"
  RecordingStore store;

  void Tell(LONG event, void* param) {
    if (observer) observer->Notify(event, param, this);
  }

  LONG OpenCamera(LONG index) override { return Answer(1, "OpenCamera", index); }
  LONG IsSataCamera() override { return Answer(2, "IsSataCamera"); }
  LONG GetMaxCameraNum() override { return Answer(3, "GetMaxCameraNum"); }
  LONG IsCameraValid(LONG index, LONG* valid) override {
    *valid = 77;
    return Answer(4, "IsCameraValid", index);
  }
  LONG IsCameraConnected(LONG* connected) override {
    *connected = 77;
    return Answer(5, "IsCameraConnected");
  }
  LONG GetCameraIndex() override { return Answer(6, "GetCameraIndex"); }
  LONG GetCameraID() override { return Answer(7, "GetCameraID"); }
  LONG GetCameraType() override { return Answer(8, "GetCameraType"); }
  LONG GetStatus() override { return Answer(9, "GetStatus"); }
  LONG Play() override { return Answer(10, "Play"); }
  LONG Pause() override { return Answer(11, "Pause"); }
  LONG Stop() override {
    if (log_) *log_ += "stopped;";
    return Answer(12, "Stop");
  }
  LONG SetBufferSamples(LONG v) override { return Answer(13, "SetBufferSamples", v); }
  LONG GetBufferSamples() override { return Answer(14, "GetBufferSamples"); }
  LONG SetKeepRawData(LONG v) override { return Answer(15, "SetKeepRawData", v); }
  LONG GetKeepRawData() override { return Answer(16, "GetKeepRawData"); }
  LONG GetBitmapInfo(BITMAPINFOHEADER*) override { return Answer(17, "GetBitmapInfo"); }
  HRESULT GetData(const FrameDestination&, LONG) override { return Answer(18, "GetData"); }
  COrvaneImage* GetImage() override { return nullptr; }
  CZELDeviceProperty* GetProperty() override { return &store; }
  void SetObserver(CZELObserver* o) override { observer = o; }

  CZELObserver* observer = nullptr;

 private:
  template <class... Arguments>
  LONG Answer(LONG own, const char* name, Arguments... arguments) {
    calls += name;
    ((calls += " " + std::to_string(arguments)), ...);
    calls += ";";
    return factor * own;
  }

  std::string* log_;
};

template <class Device>
struct CameraWith {
  template <class... Arguments>
  explicit CameraWith(Arguments... arguments)
      : camera(NewObject<CZELCamera>()), device(new Device(arguments...)) {
    camera->Attach(std::unique_ptr<CZELDevice>(device));
  }
  ComPtr<CZELCamera> camera;
  Device* device;  ///< the camera's
};
using CameraWithDevice = CameraWith<FakeDevice>;

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

/// A variant that is nothing but a type and an address.
inline VARIANT Plain(VARTYPE type, void* address) {
  VARIANT variant;
  VariantInit(&variant);
  variant.vt = type;
  variant.byref = address;
  return variant;
}

}  // namespace zel::test
