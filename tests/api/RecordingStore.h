#pragma once

#include <functional>
#include <string>
#include <type_traits>

#include "property/CZELDevicePropertyImpl.h"

// The methods of IZELProperty by the form of their answer and by their parameters. X is called with each
// name.
// clang-format off
#define ZEL_FORWARDING_1(X)                                                                                   \
  X(SetBayerDecodingMethod) X(SetTransMode) X(SetTransBits) X(SetOutputFormat) X(SetHorMirror)                \
  X(SetVerMirror) X(SetBayerMode) X(SetSubSampleX) X(SetSubSampleY) X(SetExtTrigger) X(SetHalfClock)          \
  X(SetStrobe) X(SetColorful) X(SetAutoWhiteBalance) X(SetDigitalGlobalGain) X(SetAnalogGlobalGain)           \
  X(SetThresh) X(SetAutoThresh) X(SetNoGainDep) X(SetCalCtrl) X(SetShutter) X(SetTimeout)                     \
  X(SetWhitePixelCanceling) X(SetBlackPixelCanceling) X(SetDenoise) X(SetEdgeEnhance) X(SetGamma)             \
  X(SetLensCorrection) X(SetNightMode) X(SetSaturation) X(SetBrightness) X(SetContrast) X(SetHue) X(SetIO)    \
  X(SetDotFilterThreshold) X(SetDotFilterEnabled) X(SetAutoFocusFilterType) X(SetAutoFocusCurPos)
#define ZEL_FORWARDING_2(X)                                                                                   \
  X(SetRegister) X(SetColorGain) X(SetColorOffset) X(SetProperty) X(SetProgrammableGamma) X(SetSROMRegister)  \
  X(SetSROMID) X(SetFpgaRegister) X(SetAutoFocusRange)
#define ZEL_FORWARDING_4(X) X(SetROI) X(SetOperatorBlock)
#define ZEL_VALUES_0(X)                                                                                       \
  X(GetBayerDecodingMethod) X(GetTransMode) X(GetTransBits) X(GetOutputFormat) X(GetHorMirror)                \
  X(GetVerMirror) X(GetBayerMode) X(GetSubSampleX) X(GetSubSampleY) X(GetExtTrigger) X(GetHalfClock)          \
  X(GetStrobe) X(GetColorful) X(GetAutoWhiteBalance) X(GetDigitalGlobalGain) X(GetAnalogGlobalGain)           \
  X(GetThresh) X(GetThreshDefault) X(GetAutoThresh) X(GetNoGainDep) X(GetCalCtrl) X(GetShutter)               \
  X(GetShutterDefault) X(GetTimeout) X(GetWhitePixelCanceling) X(GetBlackPixelCanceling) X(GetDenoise)        \
  X(GetEdgeEnhance) X(GetGamma) X(GetLensCorrection) X(GetNightMode) X(GetSaturation) X(GetBrightness)        \
  X(GetContrast) X(GetHue) X(GetIO) X(GetDotFilterThreshold) X(GetDotFilterEnabled) X(GetAutoFocusCurPos)     \
  X(GetMark)
#define ZEL_VALUES_1(X)                                                                                       \
  X(GetRegister) X(GetColorGain) X(GetColorGainDefault) X(GetColorOffset) X(GetColorOffsetDefault)            \
  X(GetSROMRegister) X(GetSROMID) X(GetFpgaRegister)
#define ZEL_RANGES_0(X)                                                                                       \
  X(GetDigitalGlobalGainRange) X(GetAnalogGlobalGainRange) X(GetThreshRange) X(GetShutterRange)
#define ZEL_RANGES_1(X) X(GetColorGainRange) X(GetColorOffsetRange)
#define ZEL_RECTANGLES(X) X(GetFullROI) X(GetROI)
#define ZEL_IGNORING_0(X) X(StartAutoFocus) X(StopAutoFocus)
#define ZEL_IGNORING_1(X) X(SetAutoFocusMode) X(SetColorCorrection) X(SetSharpness)
#define ZEL_IGNORING_VALUES(X) X(GetAutoFocusLevel) X(GetSharpness)
#define ZEL_IGNORING_TEXTS(X) X(SetSerialNum) X(GetSerialNum)
// clang-format on

namespace zel::test {

/// Writes down every operation that the methods of IZELProperty reach, and answers what the test sets.
class RecordingStore : public CZELDevicePropertyImpl {
 public:
  HRESULT result = S_OK;
  bool writes = true;                    ///< out parameters get 71, 72, 73, 74, else nothing
  std::string calls;                     ///< "NAME ARGUMENT ...;", "*" for an out parameter
  std::function<void()> during = [] {};  ///< what happens while an operation is under way

#define ZEL_RECORD_0(name) \
  HRESULT name() override { return Record(#name); }
#define ZEL_RECORD_1(name) \
  HRESULT name(LONG a) override { return Record(#name, a); }
#define ZEL_RECORD_2(name) \
  HRESULT name(LONG a, LONG b) override { return Record(#name, a, b); }
#define ZEL_RECORD_3(name) \
  HRESULT name(LONG a, LONG b, LONG c) override { return Record(#name, a, b, c); }
#define ZEL_RECORD_4(name) \
  HRESULT name(LONG a, LONG b, LONG c, LONG d) override { return Record(#name, a, b, c, d); }
#define ZEL_RECORD_OUT(name) \
  HRESULT name(LONG* a) override { return Record(#name, a); }
#define ZEL_RECORD_1_OUT(name) \
  HRESULT name(LONG a, LONG* b) override { return Record(#name, a, b); }
#define ZEL_RECORD_OUT_2(name) \
  HRESULT name(LONG* a, LONG* b) override { return Record(#name, a, b); }
#define ZEL_RECORD_1_OUT_2(name) \
  HRESULT name(LONG a, LONG* b, LONG* c) override { return Record(#name, a, b, c); }
#define ZEL_RECORD_OUT_4(name) \
  HRESULT name(LONG* a, LONG* b, LONG* c, LONG* d) override { return Record(#name, a, b, c, d); }
#define ZEL_RECORD_TEXT(name) \
  HRESULT name(unsigned char* a) override { return Record(#name, a); }

  // clang-format off
  ZEL_RECORD_0(ChangePIDtoDS) ZEL_IGNORING_0(ZEL_RECORD_0)
  ZEL_RECORD_1(IsPropertySupported) ZEL_FORWARDING_1(ZEL_RECORD_1) ZEL_IGNORING_1(ZEL_RECORD_1)
  ZEL_FORWARDING_2(ZEL_RECORD_2) ZEL_RECORD_3(SetRegisterEx) ZEL_FORWARDING_4(ZEL_RECORD_4)
  ZEL_VALUES_0(ZEL_RECORD_OUT) ZEL_IGNORING_VALUES(ZEL_RECORD_OUT)
  ZEL_VALUES_1(ZEL_RECORD_1_OUT) ZEL_RECORD_1_OUT(GetProgrammableGamma)
  ZEL_RANGES_0(ZEL_RECORD_OUT_2) ZEL_RANGES_1(ZEL_RECORD_1_OUT_2) ZEL_RECTANGLES(ZEL_RECORD_OUT_4)
  ZEL_IGNORING_TEXTS(ZEL_RECORD_TEXT)
      // clang-format on
      HRESULT SetRegisterB(unsigned char a, unsigned char b) override {
    return Record("SetRegisterB", LONG{a}, LONG{b});
  }
  HRESULT GetRegisterB(unsigned char a, LONG* b) override { return Record("GetRegisterB", LONG{a}, b); }
  HRESULT GetRegisterEx(LONG a, LONG* b, LONG c) override { return Record("GetRegisterEx", a, b, c); }
  HRESULT GetPropertyInfo(LONG id, PropertyRecord* record) override {
    if (writes) *record = {.minimum = 73, .maximum = 74, .defaultValue = 72, .current = 71};
    return Record("GetPropertyInfo", id);
  }

 private:
  template <class... Arguments>
  HRESULT Record(const char* name, Arguments... arguments) {
    calls += name;
    [[maybe_unused]] LONG next = 71;
    (Note(arguments, next), ...);
    calls += ";";
    during();
    return result;
  }
  void Note(LONG argument, LONG&) { calls += " " + std::to_string(argument); }
  void Note(LONG* out, LONG& next) {
    calls += " *";
    if (writes) *out = next++;
  }
  void Note(unsigned char* text, LONG&) { calls += std::string(" ") + reinterpret_cast<char*>(text); }
};

}  // namespace zel::test
