#pragma once

#include <memory>
#include <utility>

#include "api/ComObject.h"
#include "api/DeviceLink.h"
#include "property/CZELDeviceProperty.h"

namespace zel {

// The forms in which methods answer, one macro for each list of parameters; what they do is in the private
// templates of the class.
#define ZEL_FORWARD0(name)        \
  HRESULT name() override {       \
    return Forward(&Store::name); \
  }
#define ZEL_FORWARD1(name)           \
  HRESULT name(LONG a) override {    \
    return Forward(&Store::name, a); \
  }
#define ZEL_FORWARD2(name)                \
  HRESULT name(LONG a, LONG b) override { \
    return Forward(&Store::name, a, b);   \
  }
#define ZEL_FORWARD3(name)                        \
  HRESULT name(LONG a, LONG b, LONG c) override { \
    return Forward(&Store::name, a, b, c);        \
  }
#define ZEL_FORWARD4(name)                                \
  HRESULT name(LONG a, LONG b, LONG c, LONG d) override { \
    return Forward(&Store::name, a, b, c, d);             \
  }
#define ZEL_VALUE0(name)             \
  HRESULT name(LONG* out) override { \
    return Value(&Store::name, out); \
  }
#define ZEL_VALUE1(name)                     \
  HRESULT name(LONG a, LONG* out) override { \
    return Value(&Store::name, out, a);      \
  }
#define ZEL_RANGE0(name)                         \
  HRESULT name(LONG* low, LONG* high) override { \
    return Range(&Store::name, low, high);       \
  }
#define ZEL_RANGE1(name)                                 \
  HRESULT name(LONG a, LONG* low, LONG* high) override { \
    return Range(&Store::name, low, high, a);            \
  }
#define ZEL_RECORD(name, field)                     \
  HRESULT name(LONG id, LONG* out) override {       \
    return Record(&PropertyRecord::field, id, out); \
  }
#define ZEL_RECTANGLE(name)                                   \
  HRESULT name(LONG* x, LONG* y, LONG* w, LONG* h) override { \
    return Rectangle(&Store::name, x, y, w, h);               \
  }
#define ZEL_IGNORING0(name)        \
  HRESULT name() override {        \
    return Ignoring(&Store::name); \
  }
#define ZEL_IGNORING1(name)           \
  HRESULT name(LONG a) override {     \
    return Ignoring(&Store::name, a); \
  }
#define ZEL_IGNORING_OUT(name)             \
  HRESULT name(LONG* out) override {       \
    return IgnoringOut(&Store::name, out); \
  }
#define ZEL_IGNORING_TEXT(name)                \
  HRESULT name(unsigned char* text) override { \
    return Ignoring(&Store::name, text);       \
  }

/// A camera's settings for an application: each method calls the operation of the same name of the camera's
/// property object and turns its result into the method's own convention. Every method answers E_HANDLE, and
/// writes nothing, once the camera is released.
class CZELProperty final : public ComObject<IZELProperty> {
 public:
  /// Once, before the object is handed out.
  void Bind(std::shared_ptr<const DeviceLink> link) { link_ = std::move(link); }

  // clang-format off
  ZEL_FORWARD1(SetBayerDecodingMethod)
  ZEL_VALUE0(GetBayerDecodingMethod)
  HRESULT IsPropertySupported(LONG id, LONG* out) override { return Supported(id, out); }
  ZEL_FORWARD1(SetTransMode)
  ZEL_VALUE0(GetTransMode)
  ZEL_FORWARD1(SetTransBits)
  ZEL_VALUE0(GetTransBits)
  ZEL_FORWARD1(SetOutputFormat)
  ZEL_VALUE0(GetOutputFormat)
  ZEL_FORWARD1(SetHorMirror)
  ZEL_VALUE0(GetHorMirror)
  ZEL_FORWARD1(SetVerMirror)
  ZEL_VALUE0(GetVerMirror)
  ZEL_FORWARD1(SetBayerMode)
  ZEL_VALUE0(GetBayerMode)
  ZEL_FORWARD1(SetSubSampleX)
  ZEL_VALUE0(GetSubSampleX)
  ZEL_FORWARD1(SetSubSampleY)
  ZEL_VALUE0(GetSubSampleY)
  ZEL_RECTANGLE(GetFullROI)
  ZEL_FORWARD4(SetROI)
  ZEL_RECTANGLE(GetROI)
  ZEL_FORWARD1(SetExtTrigger)
  ZEL_VALUE0(GetExtTrigger)
  ZEL_FORWARD1(SetHalfClock)
  ZEL_VALUE0(GetHalfClock)
  ZEL_FORWARD1(SetStrobe)
  ZEL_VALUE0(GetStrobe)
  ZEL_FORWARD2(SetRegister)
  ZEL_VALUE1(GetRegister)
  HRESULT SetRegisterB(BYTE a, BYTE b) override { return Forward(&Store::SetRegisterB, a, b); }
  HRESULT GetRegisterB(BYTE a, LONG* out) override { return Value(&Store::GetRegisterB, out, a); }
  ZEL_FORWARD1(SetColorful)
  ZEL_VALUE0(GetColorful)
  ZEL_FORWARD1(SetAutoWhiteBalance)
  ZEL_VALUE0(GetAutoWhiteBalance)
  ZEL_FORWARD2(SetColorGain)
  ZEL_VALUE1(GetColorGain)
  ZEL_RANGE1(GetColorGainRange)
  ZEL_VALUE1(GetColorGainDefault)
  ZEL_FORWARD1(SetDigitalGlobalGain)
  ZEL_VALUE0(GetDigitalGlobalGain)
  ZEL_RANGE0(GetDigitalGlobalGainRange)
  ZEL_FORWARD1(SetAnalogGlobalGain)
  ZEL_VALUE0(GetAnalogGlobalGain)
  ZEL_RANGE0(GetAnalogGlobalGainRange)
  ZEL_FORWARD2(SetColorOffset)
  ZEL_VALUE1(GetColorOffset)
  ZEL_RANGE1(GetColorOffsetRange)
  ZEL_VALUE1(GetColorOffsetDefault)
  ZEL_FORWARD1(SetThresh)
  ZEL_VALUE0(GetThresh)
  ZEL_RANGE0(GetThreshRange)
  ZEL_VALUE0(GetThreshDefault)
  ZEL_FORWARD1(SetAutoThresh)
  ZEL_VALUE0(GetAutoThresh)
  ZEL_FORWARD1(SetNoGainDep)
  ZEL_VALUE0(GetNoGainDep)
  ZEL_FORWARD1(SetCalCtrl)
  ZEL_VALUE0(GetCalCtrl)
  ZEL_FORWARD1(SetShutter)
  ZEL_VALUE0(GetShutter)
  ZEL_RANGE0(GetShutterRange)
  ZEL_VALUE0(GetShutterDefault)
  ZEL_FORWARD0(ChangePIDtoDS)
  ZEL_FORWARD2(SetProperty)
  ZEL_RECORD(GetProperty, current)
  ZEL_RECORD(GetPropertyDefault, defaultValue)
  ZEL_RECORD(GetPropertyMin, minimum)
  ZEL_RECORD(GetPropertyMax, maximum)
  ZEL_FORWARD1(SetTimeout)
  ZEL_VALUE0(GetTimeout)
  ZEL_FORWARD1(SetWhitePixelCanceling)
  ZEL_VALUE0(GetWhitePixelCanceling)
  ZEL_FORWARD1(SetBlackPixelCanceling)
  ZEL_VALUE0(GetBlackPixelCanceling)
  ZEL_FORWARD1(SetDenoise)
  ZEL_VALUE0(GetDenoise)
  ZEL_FORWARD1(SetEdgeEnhance)
  ZEL_VALUE0(GetEdgeEnhance)
  ZEL_FORWARD1(SetGamma)
  ZEL_VALUE0(GetGamma)
  ZEL_FORWARD2(SetProgrammableGamma)
  HRESULT GetProgrammableGamma(LONG id, LONG* out) override { return GammaPoint(id, out); }
  ZEL_FORWARD1(SetLensCorrection)
  ZEL_VALUE0(GetLensCorrection)
  ZEL_FORWARD1(SetNightMode)
  ZEL_VALUE0(GetNightMode)
  ZEL_FORWARD1(SetSaturation)
  ZEL_VALUE0(GetSaturation)
  ZEL_FORWARD1(SetBrightness)
  ZEL_VALUE0(GetBrightness)
  ZEL_FORWARD1(SetContrast)
  ZEL_VALUE0(GetContrast)
  ZEL_FORWARD1(SetHue)
  ZEL_VALUE0(GetHue)
  ZEL_FORWARD1(SetIO)
  ZEL_VALUE0(GetIO)
  ZEL_FORWARD2(SetSROMRegister)
  ZEL_VALUE1(GetSROMRegister)
  ZEL_FORWARD2(SetSROMID)
  ZEL_VALUE1(GetSROMID)
  ZEL_FORWARD3(SetRegisterEx)
  HRESULT GetRegisterEx(LONG mode, LONG a, LONG* out) override { return RegisterOfKind(mode, a, out); }
  ZEL_FORWARD2(SetFpgaRegister)
  ZEL_VALUE1(GetFpgaRegister)
  ZEL_FORWARD1(SetDotFilterThreshold)
  ZEL_VALUE0(GetDotFilterThreshold)
  ZEL_FORWARD1(SetDotFilterEnabled)
  ZEL_VALUE0(GetDotFilterEnabled)
  ZEL_FORWARD1(SetAutoFocusFilterType)
  ZEL_FORWARD2(SetAutoFocusRange)
  ZEL_FORWARD1(SetAutoFocusCurPos)
  ZEL_FORWARD4(SetOperatorBlock)
  ZEL_VALUE0(GetAutoFocusCurPos)
  ZEL_IGNORING0(StartAutoFocus)
  ZEL_IGNORING0(StopAutoFocus)
  ZEL_IGNORING_OUT(GetAutoFocusLevel)
  ZEL_IGNORING1(SetAutoFocusMode)
  ZEL_IGNORING1(SetColorCorrection)
  ZEL_VALUE0(GetMark)
  ZEL_IGNORING_TEXT(SetSerialNum)
  ZEL_IGNORING_TEXT(GetSerialNum)
  ZEL_IGNORING1(SetSharpness)
  ZEL_IGNORING_OUT(GetSharpness)
  // clang-format on

 private:
  using Store = CZELDeviceProperty;

  template <class Body>
  HRESULT WithStore(Body&& body) const {
    return Guarded([&]() -> HRESULT {
      const auto device = link_ ? link_->Device() : nullptr;
      Store* const store = device ? device->GetProperty() : nullptr;
      return store ? body(*store) : E_HANDLE;
    });
  }

  /// A success carries the value itself as the result, which is what a script host sees of the method; a
  /// failure writes nothing. `read` is called with the store and where to put the value.
  template <class Read>
  HRESULT ValueAsResult(LONG* out, Read&& read) const {
    return WithStore([&](Store& store) -> HRESULT {
      LONG value = 0;
      const HRESULT result = read(store, &value);
      if (FAILED(result)) return result;
      Put(out, value);
      return value;
    });
  }

  template <class... Params, class... Args>
  HRESULT Forward(HRESULT (Store::*operation)(Params...), Args... args) const {
    return WithStore([&](Store& store) { return (store.*operation)(args...); });
  }

  template <class... Params, class... Args>
  HRESULT Value(HRESULT (Store::*operation)(Params...), LONG* out, Args... args) const {
    return ValueAsResult(out, [&](Store& store, LONG* value) { return (store.*operation)(args..., value); });
  }

  HRESULT Record(LONG PropertyRecord::*field, LONG id, LONG* out) const {
    return ValueAsResult(out, [&](Store& store, LONG* value) {
      PropertyRecord record;
      const HRESULT result = store.GetPropertyInfo(id, &record);
      *value = record.*field;
      return result;
    });
  }

  /// The operation takes the kind last.
  HRESULT RegisterOfKind(LONG mode, LONG address, LONG* out) const {
    return ValueAsResult(
        out, [&](Store& store, LONG* value) { return store.GetRegisterEx(address, value, mode); });
  }

  /// Written whatever the operation says.
  template <class... Params, class... Args>
  HRESULT Range(HRESULT (Store::*operation)(Params...), LONG* low, LONG* high, Args... args) const {
    return WithStore([&](Store& store) {
      LONG minimum = 0;
      LONG maximum = 300;
      const HRESULT result = (store.*operation)(args..., &minimum, &maximum);
      Put(low, minimum);
      Put(high, maximum);
      return result;
    });
  }

  HRESULT Rectangle(HRESULT (Store::*operation)(LONG*, LONG*, LONG*, LONG*), LONG* x, LONG* y, LONG* w,
                    LONG* h) const {
    return WithStore([&](Store& store) {
      LONG sides[4] = {};
      const HRESULT result = (store.*operation)(&sides[0], &sides[1], &sides[2], &sides[3]);
      Put(x, sides[0]);
      Put(y, sides[1]);
      Put(w, sides[2]);
      Put(h, sides[3]);
      return result;
    });
  }

  HRESULT Supported(LONG id, LONG* out) const {
    return WithStore([&](Store& store) {
      if (out) *out = store.IsPropertySupported(id);
      return store.IsPropertySupported(id);
    });
  }

  HRESULT GammaPoint(LONG id, LONG* out) const {
    return WithStore([&](Store& store) {
      LONG value = 0;
      const HRESULT result = store.GetProgrammableGamma(id, &value);
      Put(out, value);
      return result;
    });
  }

  template <class... Params, class... Args>
  HRESULT Ignoring(HRESULT (Store::*operation)(Params...), Args... args) const {
    return WithStore([&](Store& store) {
      static_cast<void>((store.*operation)(args...));
      return S_OK;
    });
  }

  /// The operation writes the value itself.
  HRESULT IgnoringOut(HRESULT (Store::*operation)(LONG*), LONG* out) const {
    LONG unwanted = 0;
    return Ignoring(operation, out ? out : &unwanted);
  }

  std::shared_ptr<const DeviceLink> link_;
};

#undef ZEL_FORWARD0
#undef ZEL_FORWARD1
#undef ZEL_FORWARD2
#undef ZEL_FORWARD3
#undef ZEL_FORWARD4
#undef ZEL_VALUE0
#undef ZEL_VALUE1
#undef ZEL_RANGE0
#undef ZEL_RANGE1
#undef ZEL_RECORD
#undef ZEL_RECTANGLE
#undef ZEL_IGNORING0
#undef ZEL_IGNORING1
#undef ZEL_IGNORING_OUT
#undef ZEL_IGNORING_TEXT

}  // namespace zel
