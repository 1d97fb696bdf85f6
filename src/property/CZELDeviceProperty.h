#pragma once

#include "platform/ComponentTypes.h"
#include "property/PropertyIds.h"

namespace zel {

/// A camera's settings. Setters validate, reach the hardware where the camera type has it, and store; the
/// generic rules are in `CZELDevicePropertyImpl`. All operations return an HRESULT: S_OK, E_NOTIMPL for a
/// setting that this camera type does not offer, E_INVALIDARG for a value out of range, E_FAIL for a failed
/// register access. Getters write their value also when they answer E_NOTIMPL. To be used from one
/// application thread; the capture engine only reads it in `Play`.
class CZELDeviceProperty {
 public:
  virtual ~CZELDeviceProperty() = default;

  // How a frame is transferred, decoded and mirrored.
  virtual HRESULT SetBayerDecodingMethod(LONG method) = 0;
  virtual HRESULT GetBayerDecodingMethod(LONG* method) = 0;
  virtual HRESULT IsPropertySupported(LONG id) = 0;
  virtual HRESULT SetTransMode(LONG mode) = 0;
  virtual HRESULT GetTransMode(LONG* mode) = 0;
  virtual HRESULT SetTransBits(LONG bits) = 0;
  virtual HRESULT GetTransBits(LONG* bits) = 0;
  virtual HRESULT SetOutputFormat(LONG format) = 0;
  virtual HRESULT GetOutputFormat(LONG* format) = 0;
  virtual HRESULT SetHorMirror(LONG on) = 0;
  virtual HRESULT GetHorMirror(LONG* on) = 0;
  virtual HRESULT SetVerMirror(LONG on) = 0;
  virtual HRESULT GetVerMirror(LONG* on) = 0;
  virtual HRESULT SetBayerMode(LONG mode) = 0;
  virtual HRESULT GetBayerMode(LONG* mode) = 0;
  virtual HRESULT SetSubSampleX(LONG code) = 0;
  virtual HRESULT GetSubSampleX(LONG* code) = 0;
  virtual HRESULT SetSubSampleY(LONG code) = 0;
  virtual HRESULT GetSubSampleY(LONG* code) = 0;

  // Window on the sensor, in pixels.
  virtual HRESULT GetFullROI(LONG* x, LONG* y, LONG* width, LONG* height) = 0;
  virtual HRESULT SetROI(LONG x, LONG y, LONG width, LONG height) = 0;
  virtual HRESULT GetROI(LONG* x, LONG* y, LONG* width, LONG* height) = 0;
  virtual HRESULT SetLargeFrameOption(LONG option) = 0;
  virtual HRESULT GetLargeFrameOption(LONG* option) = 0;

  // Trigger, clock and registers of the sensor.
  virtual HRESULT SetExtTrigger(LONG on) = 0;
  virtual HRESULT GetExtTrigger(LONG* on) = 0;
  virtual HRESULT SetHalfClock(LONG value) = 0;
  virtual HRESULT GetHalfClock(LONG* value) = 0;
  virtual HRESULT SetStrobe(LONG on) = 0;
  virtual HRESULT GetStrobe(LONG* on) = 0;
  virtual HRESULT SetRegister(LONG address, LONG value) = 0;
  virtual HRESULT GetRegister(LONG address, LONG* value) = 0;
  virtual HRESULT SetRegisterEx(LONG mode, LONG address, LONG value) = 0;
  virtual HRESULT GetRegisterEx(LONG address, LONG* value, LONG mode) = 0;
  virtual HRESULT SetRegisterB(unsigned char address, unsigned char value) = 0;
  virtual HRESULT GetRegisterB(unsigned char address, LONG* value) = 0;

  // Colour and gain; the id is that of the channel's record.
  virtual HRESULT SetColorful(LONG on) = 0;
  virtual HRESULT GetColorful(LONG* on) = 0;
  virtual HRESULT SetAutoWhiteBalance(LONG mode) = 0;
  virtual HRESULT GetAutoWhiteBalance(LONG* mode) = 0;
  virtual HRESULT SetColorGain(LONG id, LONG value) = 0;
  virtual HRESULT GetColorGain(LONG id, LONG* value) = 0;
  virtual HRESULT GetColorGainRange(LONG id, LONG* minimum, LONG* maximum) = 0;
  virtual HRESULT GetColorGainDefault(LONG id, LONG* value) = 0;
  virtual HRESULT SetAnalogGlobalGain(LONG value) = 0;
  virtual HRESULT GetAnalogGlobalGain(LONG* value) = 0;
  virtual HRESULT GetAnalogGlobalGainRange(LONG* minimum, LONG* maximum) = 0;
  virtual HRESULT SetDigitalGlobalGain(LONG value) = 0;
  virtual HRESULT GetDigitalGlobalGain(LONG* value) = 0;
  virtual HRESULT GetDigitalGlobalGainRange(LONG* minimum, LONG* maximum) = 0;
  virtual HRESULT SetColorOffset(LONG id, LONG value) = 0;
  virtual HRESULT GetColorOffset(LONG id, LONG* value) = 0;
  virtual HRESULT GetColorOffsetRange(LONG id, LONG* minimum, LONG* maximum) = 0;
  virtual HRESULT GetColorOffsetDefault(LONG id, LONG* value) = 0;

  // Thresholds, switches and exposure.
  virtual HRESULT SetThresh(LONG value) = 0;
  virtual HRESULT GetThresh(LONG* value) = 0;
  virtual HRESULT GetThreshRange(LONG* minimum, LONG* maximum) = 0;
  virtual HRESULT GetThreshDefault(LONG* value) = 0;
  virtual HRESULT SetAutoThresh(LONG value) = 0;
  virtual HRESULT GetAutoThresh(LONG* value) = 0;
  virtual HRESULT SetNoGainDep(LONG value) = 0;
  virtual HRESULT GetNoGainDep(LONG* value) = 0;
  virtual HRESULT SetCalCtrl(LONG value) = 0;
  virtual HRESULT GetCalCtrl(LONG* value) = 0;
  virtual HRESULT SetAuxValue1(LONG value) = 0;
  virtual HRESULT GetAuxValue1(LONG* value) = 0;
  virtual HRESULT SetAuxValue2(LONG value) = 0;
  virtual HRESULT GetAuxValue2(LONG* value) = 0;
  virtual HRESULT SetShutter(LONG value) = 0;
  virtual HRESULT GetShutter(LONG* value) = 0;
  virtual HRESULT GetShutterRange(LONG* minimum, LONG* maximum) = 0;
  virtual HRESULT GetShutterDefault(LONG* value) = 0;

  // Properties by number, see PropertyIds.h.
  virtual HRESULT ChangePIDtoDS() = 0;
  virtual HRESULT SetProperty(LONG id, LONG value) = 0;
  virtual HRESULT GetPropertyInfo(LONG id, PropertyRecord* record) = 0;
  virtual HRESULT SetTimeout(LONG milliseconds) = 0;
  virtual HRESULT GetTimeout(LONG* milliseconds) = 0;

  // Picture corrections.
  virtual HRESULT SetWhitePixelCanceling(LONG value) = 0;
  virtual HRESULT GetWhitePixelCanceling(LONG* value) = 0;
  virtual HRESULT SetBlackPixelCanceling(LONG value) = 0;
  virtual HRESULT GetBlackPixelCanceling(LONG* value) = 0;
  virtual HRESULT SetDenoise(LONG value) = 0;
  virtual HRESULT GetDenoise(LONG* value) = 0;
  virtual HRESULT SetEdgeEnhance(LONG value) = 0;
  virtual HRESULT GetEdgeEnhance(LONG* value) = 0;
  virtual HRESULT SetGamma(LONG value) = 0;
  virtual HRESULT GetGamma(LONG* value) = 0;
  virtual HRESULT SetProgrammableGamma(LONG id, LONG value) = 0;
  virtual HRESULT GetProgrammableGamma(LONG id, LONG* value) = 0;
  virtual HRESULT SetLensCorrection(LONG value) = 0;
  virtual HRESULT GetLensCorrection(LONG* value) = 0;
  virtual HRESULT SetNightMode(LONG value) = 0;
  virtual HRESULT GetNightMode(LONG* value) = 0;
  virtual HRESULT SetSaturation(LONG value) = 0;
  virtual HRESULT GetSaturation(LONG* value) = 0;
  virtual HRESULT SetBrightness(LONG value) = 0;
  virtual HRESULT GetBrightness(LONG* value) = 0;
  virtual HRESULT SetContrast(LONG value) = 0;
  virtual HRESULT GetContrast(LONG* value) = 0;
  virtual HRESULT SetHue(LONG value) = 0;
  virtual HRESULT GetHue(LONG* value) = 0;

  // Ports, serial ROM and FPGA.
  virtual HRESULT SetIO(LONG value) = 0;
  virtual HRESULT GetIO(LONG* value) = 0;
  virtual HRESULT SetIOPort(LONG value) = 0;
  virtual HRESULT GetIOPort(LONG* value) = 0;
  virtual HRESULT SetSROMRegister(LONG address, LONG value) = 0;
  virtual HRESULT GetSROMRegister(LONG address, LONG* value) = 0;
  virtual HRESULT SetFpgaRegister(LONG address, LONG value) = 0;
  virtual HRESULT GetFpgaRegister(LONG address, LONG* value) = 0;
  virtual HRESULT SetSROMID(LONG address, LONG value) = 0;
  virtual HRESULT GetSROMID(LONG address, LONG* value) = 0;

  // Colour matrix and values that single camera types give a meaning.
  virtual HRESULT SetColorCorrection(LONG on) = 0;
  virtual HRESULT GetColorCorrection(LONG* on) = 0;
  virtual HRESULT SetColorMatrixElement(LONG column, LONG row, float value) = 0;
  virtual HRESULT GetColorMatrixElement(LONG column, LONG row, float* value) = 0;
  virtual HRESULT SetModelOption(const unsigned char* data, LONG length) = 0;
  virtual HRESULT SetModelValue1(LONG value) = 0;
  virtual HRESULT GetModelValue1(LONG* value) = 0;
  virtual HRESULT SetModelValue2(LONG value) = 0;
  virtual HRESULT GetModelValue2(LONG* value) = 0;
  virtual HRESULT SetModelValue3(LONG value) = 0;
  virtual HRESULT GetModelValue3(LONG* value) = 0;
  virtual HRESULT SetPositiveValue(LONG value) = 0;
  virtual HRESULT GetPositiveValue(LONG* value) = 0;
  virtual HRESULT SetPairValue(LONG value, LONG selector) = 0;
  virtual HRESULT GetPairValue(LONG* value, LONG selector) = 0;
  virtual HRESULT SetAuxValue3(LONG value) = 0;
  virtual HRESULT GetAuxValue3(LONG* value) = 0;
  virtual HRESULT SetAuxValue4(LONG value) = 0;
  virtual HRESULT GetAuxValue4(LONG* value) = 0;
  virtual HRESULT SetModelValue4(LONG value) = 0;
  virtual HRESULT GetModelValue4(LONG* value) = 0;
  virtual HRESULT SetModelValue5(LONG value) = 0;
  virtual HRESULT GetModelValue5(LONG* value) = 0;

  // Defect filter, serial number (8 characters and a zero), autofocus, sharpness.
  virtual HRESULT SetDotFilterThreshold(LONG threshold) = 0;
  virtual HRESULT GetDotFilterThreshold(LONG* threshold) = 0;
  virtual HRESULT SetDotFilterEnabled(LONG on) = 0;
  virtual HRESULT GetDotFilterEnabled(LONG* on) = 0;
  virtual HRESULT SetSerialNum(unsigned char* text) = 0;
  virtual HRESULT GetSerialNum(unsigned char* text) = 0;
  virtual HRESULT SetAutoFocusFilterType(LONG type) = 0;
  virtual HRESULT SetAutoFocusRange(LONG minimum, LONG maximum) = 0;
  virtual HRESULT SetAutoFocusCurPos(LONG position) = 0;
  virtual HRESULT SetOperatorBlock(LONG x, LONG y, LONG width, LONG height) = 0;
  virtual HRESULT GetAutoFocusCurPos(LONG* position) = 0;
  virtual HRESULT StartAutoFocus() = 0;
  virtual HRESULT StopAutoFocus() = 0;
  virtual HRESULT GetAutoFocusLevel(LONG* level) = 0;
  virtual HRESULT SetAutoFocusMode(LONG mode) = 0;
  virtual HRESULT GetMark(LONG* mark) = 0;
  virtual HRESULT SetSharpness(LONG value) = 0;
  virtual HRESULT GetSharpness(LONG* value) = 0;
};

}  // namespace zel
