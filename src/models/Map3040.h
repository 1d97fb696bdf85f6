#pragma once

#include <algorithm>

#include "models/SwitchedProperty.h"

/// The register map of the line's larger CMOS sensors: 16-bit registers at 16-bit addresses, mirrors and
/// sub-sampling in one read mode.
namespace zel::map3040 {

constexpr LONG kShutterHigh = Chosen(0x0200);  // lines, bits 16 to 19
constexpr LONG kCoarseShutter = Documented(0x0202);
constexpr LONG kPixelClockDivider = Documented(0x0302);
constexpr LONG kOutputClockDivider = Documented(0x030A);
constexpr LONG kColumnStart = Chosen(0x0344);
constexpr LONG kRowStart = Chosen(0x0346);
constexpr LONG kColumns = Chosen(0x034C);  // of the picture
constexpr LONG kRows = Chosen(0x034E);
constexpr LONG kNativeShutter = Documented(0x3012);
constexpr LONG kReadMode = Documented(0x3040);
constexpr LONG kGain = Documented(0x305E);
constexpr LONG kFlashControl = Chosen(0x3270);

constexpr LONG kMirrorRowsBit = Chosen(0x8000);     // of kReadMode: vertical mirror
constexpr LONG kMirrorColumnsBit = Chosen(0x4000);  // of kReadMode: horizontal mirror
constexpr int kColumnStepShift = 6;                 // of kReadMode: step from pair to pair, 1, 3 or 7
constexpr int kRowStepShift = 0;
constexpr LONG kFlashBit = Chosen(0x0001);  // of kFlashControl: fires on the first output of the I/O port

constexpr LONG kFullClock = Chosen(1);  // both dividers
constexpr LONG kHalfClock = Chosen(2);

/// Mantissa in bits 0 to 9, exponent in bits 12 to 14.
constexpr LONG ExponentGain(LONG gain) {
  return (gain & 0x3FF) | ((gain & 0x1C00) << 2);
}

constexpr LONG PlainGain(LONG gain) {
  return gain;
}

/// What tells the sensors of this map apart.
struct Traits {
  LONG shutter = kCoarseShutter;
  LONG shutterMask = 0xFFFFF;
  LONG leastLines = 0;  ///< that the register takes
  LONG gainMask = 0x7F;
  LONG (*gainCode)(LONG gain) = PlainGain;
  RegisterBit trigger = {};  ///< address 0: none
};

/// Window, shutter, gain, mirrors and trigger of a sensor with this map.
template <class FamilyProperty>
class Property : public SwitchedProperty<FamilyProperty> {
 public:
  LONG InitializeCamera() override {
    shutterHigh_ = 0;
    return SwitchedProperty<FamilyProperty>::InitializeCamera();
  }

  HRESULT SetShutter(LONG lines) override {
    return this->Adjust(kShutter, lines, traits_.shutterMask,
                        [this](LONG value) { return ProgramShutter(value); });
  }

  HRESULT SetDigitalGlobalGain(LONG gain) override {
    return this->Adjust(kDigitalGlobalGain, gain, traits_.gainMask,
                        [this](LONG value) { return this->SetRegister(kGain, traits_.gainCode(value)); });
  }

  HRESULT SetExtTrigger(LONG on) override {
    if (this->Record(kExtTrigger).supported == 0) return E_NOTIMPL;
    const HRESULT result = ProgramTrigger(on != 0);
    return FAILED(result) ? result : FamilyProperty::SetExtTrigger(on);
  }

  /// Everything that a capture needs and the sensor may have lost, or kept from another program.
  bool ProgramWindow(const CaptureWindow& window) {
    const LONG step = (2 << this->Record(kSubSampleX).current) - 1;
    LONG mode = step << kColumnStepShift | step << kRowStepShift;
    if (this->Record(kHorMirror).current != 0) mode |= kMirrorColumnsBit;
    if (this->Record(kVerMirror).current != 0) mode |= kMirrorRowsBit;
    const bool programmed = SUCCEEDED(this->SetRegister(kColumnStart, window.x)) &&
                            SUCCEEDED(this->SetRegister(kRowStart, window.y)) &&
                            SUCCEEDED(this->SetRegister(kColumns, window.width)) &&
                            SUCCEEDED(this->SetRegister(kRows, window.height)) &&
                            SUCCEEDED(this->SetRegister(kReadMode, mode));
    return programmed && SUCCEEDED(RepeatLongShutter()) && SUCCEEDED(RepeatTrigger());
  }

 protected:
  explicit Property(LONG type, const Traits& traits = {})
      : SwitchedProperty<FamilyProperty>(type, {.horMirror = {kReadMode, kMirrorColumnsBit},
                                                .verMirror = {kReadMode, kMirrorRowsBit},
                                                .trigger = traits.trigger}),
        traits_(traits) {
    if (traits.trigger.address != 0) this->OfferSwitch(kExtTrigger);
  }

  virtual HRESULT ProgramTrigger(bool on) {
    return this->SwitchBits(traits_.trigger.address, traits_.trigger.bit, on);
  }

  HRESULT ProgramShutter(LONG lines) {
    const LONG high = lines >> 16;
    if (high != shutterHigh_) {
      const HRESULT result = this->SetRegister(kShutterHigh, high);
      if (FAILED(result)) return result;
      shutterHigh_ = high;
    }
    return this->SetRegister(traits_.shutter, std::max(lines, traits_.leastLines) & 0xFFFF);
  }

  HRESULT RepeatLongShutter() {
    const PropertyRecord& shutter = this->Record(kShutter);
    if (shutter.maximum <= 0xFFFF) return S_OK;
    shutterHigh_ = -1;
    return ProgramShutter(shutter.current);
  }

  HRESULT RepeatTrigger() {
    const PropertyRecord& trigger = this->Record(kExtTrigger);
    return trigger.supported != 0 ? ProgramTrigger(trigger.current != 0) : S_OK;
  }

  HRESULT SetClockDividers(bool half) {
    return this->WriteParts(half ? map3040::kHalfClock : kFullClock,
                            {{kPixelClockDivider, 0xF}, {kOutputClockDivider, 0xF}});
  }

 private:
  const Traits traits_;
  LONG shutterHigh_ = 0;  ///< as the sensor holds it; -1: not known
};

/// A sensor that divides its clock itself, at once.
template <class Sensor>
class OwnHalfClock : public Sensor {
 public:
  HRESULT SetHalfClock(LONG on) override {
    if (!this->IsAttached()) return E_FAIL;
    if (this->Record(zel::kHalfClock).supported == 0) return E_NOTIMPL;
    const HRESULT result = this->SetClockDividers(on != 0);
    return FAILED(result) ? result : CZELDevicePropertyImpl::SetHalfClock(on);
  }
  HRESULT GetHalfClock(LONG* on) override { return CZELDevicePropertyImpl::GetHalfClock(on); }

 protected:
  template <class... Arguments>
  explicit OwnHalfClock(const Arguments&... arguments) : Sensor(arguments...) {
    this->OfferSwitch(zel::kHalfClock);
  }
};

}  // namespace zel::map3040
