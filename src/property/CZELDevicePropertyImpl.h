#pragma once

#include <array>
#include <functional>
#include <memory>

#include "imaging/CAutoFocus.h"
#include "property/CZELDeviceProperty.h"
#include "property/CaptureLink.h"

namespace zel {

class CZELDevice;

/// Settings that have no range record; see the setters of the same names.
struct PlainSettings {
  LONG largeFrameOption = 0;
  LONG transferMode = 0;  ///< 0: one byte per sample, 1: two
  LONG transferBits = 0;
  LONG baseBayerPhase = 0;  ///< 0..3, of the sensor's first pixel; set by the model
  LONG bayerMode = 0;
  LONG outputFormat = 5;
  LONG inputFormat = 0;  ///< 0 mosaic or monochrome, 4 packed 24-bit, 6 YUV 4:2:2; set by the model
  LONG colorful = 1;
  LONG autoWhiteBalance = 0;
  LONG timeoutMs = 3000;
  LONG bayerDecodingMethod = 0;
  LONG twoTap = 0;
  std::array<LONG, 4> rawLayout{};
  LONG positiveValue = 1;
  std::array<LONG, 2> pairValue{1, 0};  ///< first, second
};

/// The generic store behind every camera's settings: 65 records, the plain settings and the colour matrix.
/// Knows no hardware; transports and models override what must reach the camera and call these bodies for
/// validation and storage.
class CZELDevicePropertyImpl : public CZELDeviceProperty, private FocusDrive {
 public:
  CZELDevicePropertyImpl();
  ~CZELDevicePropertyImpl() override;

  HRESULT SetBayerDecodingMethod(LONG method) override;
  HRESULT GetBayerDecodingMethod(LONG* method) override;
  HRESULT IsPropertySupported(LONG id) override;
  HRESULT SetTransMode(LONG mode) override;
  HRESULT GetTransMode(LONG* mode) override;
  HRESULT SetTransBits(LONG bits) override;
  HRESULT GetTransBits(LONG* bits) override;
  HRESULT SetOutputFormat(LONG format) override;
  HRESULT GetOutputFormat(LONG* format) override;
  HRESULT SetHorMirror(LONG on) override;
  HRESULT GetHorMirror(LONG* on) override;
  HRESULT SetVerMirror(LONG on) override;
  HRESULT GetVerMirror(LONG* on) override;
  HRESULT SetBayerMode(LONG mode) override;
  HRESULT GetBayerMode(LONG* mode) override;
  HRESULT SetSubSampleX(LONG code) override;
  HRESULT GetSubSampleX(LONG* code) override;
  HRESULT SetSubSampleY(LONG code) override;
  HRESULT GetSubSampleY(LONG* code) override;
  HRESULT GetFullROI(LONG* x, LONG* y, LONG* width, LONG* height) override;
  HRESULT SetROI(LONG x, LONG y, LONG width, LONG height) override;
  HRESULT GetROI(LONG* x, LONG* y, LONG* width, LONG* height) override;
  HRESULT SetLargeFrameOption(LONG option) override;
  HRESULT GetLargeFrameOption(LONG* option) override;
  HRESULT SetExtTrigger(LONG on) override;
  HRESULT GetExtTrigger(LONG* on) override;
  HRESULT SetHalfClock(LONG value) override;
  HRESULT GetHalfClock(LONG* value) override;
  HRESULT SetStrobe(LONG on) override;
  HRESULT GetStrobe(LONG* on) override;
  HRESULT SetRegister(LONG address, LONG value) override;
  HRESULT GetRegister(LONG address, LONG* value) override;
  HRESULT SetRegisterEx(LONG mode, LONG address, LONG value) override;
  HRESULT GetRegisterEx(LONG address, LONG* value, LONG mode) override;
  HRESULT SetRegisterB(unsigned char address, unsigned char value) override;
  HRESULT GetRegisterB(unsigned char address, LONG* value) override;
  HRESULT SetColorful(LONG on) override;
  HRESULT GetColorful(LONG* on) override;
  HRESULT SetAutoWhiteBalance(LONG mode) override;
  HRESULT GetAutoWhiteBalance(LONG* mode) override;
  HRESULT SetColorGain(LONG id, LONG value) override;
  HRESULT GetColorGain(LONG id, LONG* value) override;
  HRESULT GetColorGainRange(LONG id, LONG* minimum, LONG* maximum) override;
  HRESULT GetColorGainDefault(LONG id, LONG* value) override;
  HRESULT SetAnalogGlobalGain(LONG value) override;
  HRESULT GetAnalogGlobalGain(LONG* value) override;
  HRESULT GetAnalogGlobalGainRange(LONG* minimum, LONG* maximum) override;
  HRESULT SetDigitalGlobalGain(LONG value) override;
  HRESULT GetDigitalGlobalGain(LONG* value) override;
  HRESULT GetDigitalGlobalGainRange(LONG* minimum, LONG* maximum) override;
  HRESULT SetColorOffset(LONG id, LONG value) override;
  HRESULT GetColorOffset(LONG id, LONG* value) override;
  HRESULT GetColorOffsetRange(LONG id, LONG* minimum, LONG* maximum) override;
  HRESULT GetColorOffsetDefault(LONG id, LONG* value) override;
  HRESULT SetThresh(LONG value) override;
  HRESULT GetThresh(LONG* value) override;
  HRESULT GetThreshRange(LONG* minimum, LONG* maximum) override;
  HRESULT GetThreshDefault(LONG* value) override;
  HRESULT SetAutoThresh(LONG value) override;
  HRESULT GetAutoThresh(LONG* value) override;
  HRESULT SetNoGainDep(LONG value) override;
  HRESULT GetNoGainDep(LONG* value) override;
  HRESULT SetCalCtrl(LONG value) override;
  HRESULT GetCalCtrl(LONG* value) override;
  HRESULT SetAuxValue1(LONG value) override;
  HRESULT GetAuxValue1(LONG* value) override;
  HRESULT SetAuxValue2(LONG value) override;
  HRESULT GetAuxValue2(LONG* value) override;
  HRESULT SetShutter(LONG value) override;
  HRESULT GetShutter(LONG* value) override;
  HRESULT GetShutterRange(LONG* minimum, LONG* maximum) override;
  HRESULT GetShutterDefault(LONG* value) override;
  HRESULT ChangePIDtoDS() override;
  HRESULT SetProperty(LONG id, LONG value) override;
  HRESULT GetPropertyInfo(LONG id, PropertyRecord* record) override;
  HRESULT SetTimeout(LONG milliseconds) override;
  HRESULT GetTimeout(LONG* milliseconds) override;
  HRESULT SetWhitePixelCanceling(LONG value) override;
  HRESULT GetWhitePixelCanceling(LONG* value) override;
  HRESULT SetBlackPixelCanceling(LONG value) override;
  HRESULT GetBlackPixelCanceling(LONG* value) override;
  HRESULT SetDenoise(LONG value) override;
  HRESULT GetDenoise(LONG* value) override;
  HRESULT SetEdgeEnhance(LONG value) override;
  HRESULT GetEdgeEnhance(LONG* value) override;
  HRESULT SetGamma(LONG value) override;
  HRESULT GetGamma(LONG* value) override;
  HRESULT SetProgrammableGamma(LONG id, LONG value) override;
  HRESULT GetProgrammableGamma(LONG id, LONG* value) override;
  HRESULT SetLensCorrection(LONG value) override;
  HRESULT GetLensCorrection(LONG* value) override;
  HRESULT SetNightMode(LONG value) override;
  HRESULT GetNightMode(LONG* value) override;
  HRESULT SetSaturation(LONG value) override;
  HRESULT GetSaturation(LONG* value) override;
  HRESULT SetBrightness(LONG value) override;
  HRESULT GetBrightness(LONG* value) override;
  HRESULT SetContrast(LONG value) override;
  HRESULT GetContrast(LONG* value) override;
  HRESULT SetHue(LONG value) override;
  HRESULT GetHue(LONG* value) override;
  HRESULT SetIO(LONG value) override;
  HRESULT GetIO(LONG* value) override;
  HRESULT SetIOPort(LONG value) override;
  HRESULT GetIOPort(LONG* value) override;
  HRESULT SetSROMRegister(LONG address, LONG value) override;
  HRESULT GetSROMRegister(LONG address, LONG* value) override;
  HRESULT SetFpgaRegister(LONG address, LONG value) override;
  HRESULT GetFpgaRegister(LONG address, LONG* value) override;
  HRESULT SetSROMID(LONG address, LONG value) override;
  HRESULT GetSROMID(LONG address, LONG* value) override;
  HRESULT SetColorCorrection(LONG on) override;
  HRESULT GetColorCorrection(LONG* on) override;
  HRESULT SetColorMatrixElement(LONG column, LONG row, float value) override;
  HRESULT GetColorMatrixElement(LONG column, LONG row, float* value) override;
  HRESULT SetModelOption(const unsigned char* data, LONG length) override;
  HRESULT SetModelValue1(LONG value) override;
  HRESULT GetModelValue1(LONG* value) override;
  HRESULT SetModelValue2(LONG value) override;
  HRESULT GetModelValue2(LONG* value) override;
  HRESULT SetModelValue3(LONG value) override;
  HRESULT GetModelValue3(LONG* value) override;
  HRESULT SetPositiveValue(LONG value) override;
  HRESULT GetPositiveValue(LONG* value) override;
  HRESULT SetPairValue(LONG value, LONG selector) override;
  HRESULT GetPairValue(LONG* value, LONG selector) override;
  HRESULT SetAuxValue3(LONG value) override;
  HRESULT GetAuxValue3(LONG* value) override;
  HRESULT SetAuxValue4(LONG value) override;
  HRESULT GetAuxValue4(LONG* value) override;
  HRESULT SetModelValue4(LONG value) override;
  HRESULT GetModelValue4(LONG* value) override;
  HRESULT SetModelValue5(LONG value) override;
  HRESULT GetModelValue5(LONG* value) override;
  HRESULT SetDotFilterThreshold(LONG threshold) override;
  HRESULT GetDotFilterThreshold(LONG* threshold) override;
  HRESULT SetDotFilterEnabled(LONG on) override;
  HRESULT GetDotFilterEnabled(LONG* on) override;
  HRESULT SetSerialNum(unsigned char* text) override;
  HRESULT GetSerialNum(unsigned char* text) override;
  HRESULT SetAutoFocusFilterType(LONG type) override;
  HRESULT SetAutoFocusRange(LONG minimum, LONG maximum) override;
  HRESULT SetAutoFocusCurPos(LONG position) override;
  HRESULT SetOperatorBlock(LONG x, LONG y, LONG width, LONG height) override;
  HRESULT GetAutoFocusCurPos(LONG* position) override;
  HRESULT StartAutoFocus() override;
  HRESULT StopAutoFocus() override;
  HRESULT GetAutoFocusLevel(LONG* level) override;
  HRESULT SetAutoFocusMode(LONG mode) override;
  HRESULT GetMark(LONG* mark) override;
  HRESULT SetSharpness(LONG value) override;
  HRESULT GetSharpness(LONG* value) override;

  virtual HRESULT SetRawLayout(LONG a, LONG b, LONG c, LONG d);
  /// The Bayer phase (0..3) of the picture's first pixel, from the sensor's phase, window and mirrors.
  virtual LONG UpdateDerivedSizes();
  /// The device must outlive the attachment.
  virtual HRESULT AttachDevice(CZELDevice* device);
  virtual HRESULT DetachDevice();
  /// Hands the colour matrix to the running image object; E_HANDLE without a device.
  virtual HRESULT ApplyColorMatrix();
  virtual LONG OnCaptureStopped();
  virtual void AbortTransfer();
  /// The model's programming of a freshly reset sensor; 1 when it is ready.
  virtual LONG InitializeCamera();

  const PlainSettings& Settings() const { return settings_; }
  /// One of the 65: a caller's id is checked with `IsPropertyId` first.
  const PropertyRecord& Record(LONG id) const { return records_[static_cast<std::size_t>(id)]; }
  CAutoFocus& AutoFocus() { return autoFocus_; }
  bool IsAttached() const { return device_ != nullptr; }
  /// Gives an image object the software part of white pixel cancelling, where the camera type offers it.
  void ApplyWhitePixelCanceling(COrvaneImageImpl& image) const;
  /// Lets setters reach the running capture of the attached device, which calls this itself.
  void ConnectCapture(CaptureLink* capture) { capture_ = capture; }

 protected:
  PropertyRecord& Edit(LONG id) { return records_[static_cast<std::size_t>(id)]; }
  CZELDevice* Device() const { return device_; }
  /// Stays alive as long as the pointer; null unless capturing.
  std::shared_ptr<COrvaneImageImpl> RunningImage() const;

  PlainSettings settings_;

 private:
  // The generic patterns of setters and getters; an id outside the 65 is E_NOTIMPL.
  HRESULT SetRanged(LONG id, LONG value);         ///< supported, then range
  HRESULT SetFlag(LONG id, LONG value);           ///< supported; any value
  HRESULT SetInRange(LONG id, LONG value);        ///< range only
  HRESULT SetThenSupported(LONG id, LONG value);  ///< stored also when E_NOTIMPL
  HRESULT SetMirror(LONG id, LONG on);
  HRESULT SetSubSample(LONG id, LONG code);
  HRESULT GetCurrent(LONG id, LONG* value) const;
  HRESULT GetRange(LONG id, LONG* minimum, LONG* maximum) const;
  HRESULT GetDefault(LONG id, LONG* value) const;
  HRESULT SupportOf(LONG id) const;

  /// Calls a setter of the running image object, if there is one.
  template <class Setter, class... Arguments>
  void Push(Setter setter, Arguments... arguments) const {
    if (const auto image = RunningImage()) std::invoke(setter, *image, arguments...);
  }

  template <class Setter>
  HRESULT SetInRangeAndPush(LONG id, LONG value, Setter setter) {
    const HRESULT result = SetInRange(id, value);
    if (result == S_OK) Push(setter, value);
    return result;
  }

  // FocusDrive: setting 48, called on the autofocus worker.
  LONG ReadFocusPosition() override;
  void WriteFocusPosition(LONG position) override;

  std::array<PropertyRecord, kPropertyCount> records_{};
  std::array<std::array<float, 4>, 4> colorMatrix_;  ///< [row][column]
  CZELDevice* device_ = nullptr;                     ///< not owned
  CaptureLink* capture_ = nullptr;                   ///< not owned
  CAutoFocus autoFocus_;
};

}  // namespace zel
