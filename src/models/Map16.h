#pragma once

#include "models/SwitchedProperty.h"

/// The register map that many of the line's CMOS sensors share: 16-bit registers for window, read modes,
/// shutter in lines and gain.
namespace zel::map16 {

constexpr LONG kRowStart = Documented(0x01);
constexpr LONG kColumnStart = Documented(0x02);
constexpr LONG kRowSize = Documented(0x03);      // rows - 1
constexpr LONG kColumnSize = Documented(0x04);   // columns - 1
constexpr LONG kShutterHigh = Documented(0x08);  // lines, bits 16 to 19
constexpr LONG kShutterLines = Documented(0x09);
constexpr LONG kClockControl = Chosen(0x0A);
constexpr LONG kReadMode1 = Documented(0x1E);
constexpr LONG kReadMode2 = Documented(0x20);
constexpr LONG kFineGain = Documented(0x2F);  // where the gain has 11 bits
constexpr LONG kGain = Documented(0x35);
constexpr LONG kThreshControl = Documented(0x5F);

constexpr LONG kHalfClockBit = Chosen(0x0001);           // of kClockControl
constexpr LONG kTriggerBit = Documented(0x0100);         // of kReadMode1
constexpr LONG kStrobeBit = Documented(0x0200);          // of kReadMode1: the sensor's flash output
constexpr LONG kMirrorRowsBit = Documented(0x8000);      // of kReadMode2: vertical mirror
constexpr LONG kMirrorColumnsBit = Documented(0x4000);   // of kReadMode2: horizontal mirror
constexpr LONG kMirrorRowsOffMask = Documented(0x7F7F);  // bit 7 goes with the vertical mirror
constexpr LONG kAutoThreshBit = Documented(0x0080);      // of kThreshControl

constexpr SensorSwitches kSwitches{.horMirror = {kReadMode2, kMirrorColumnsBit},
                                   .verMirror = {kReadMode2, kMirrorRowsBit},
                                   .trigger = {kReadMode1, kTriggerBit}};

// Dark columns and rows before the picture.
constexpr LONG kFirstColumn = Documented(20);
constexpr LONG kFirstRow = Documented(12);

struct ReadModes {
  LONG mode1 = 0;
  LONG mode2 = 0;
};

/// Bits 2 to 5 of the first mode skip columns, bits 3 and 4 of the second select the half-width read-out.
constexpr ReadModes SubSampled(ReadModes modes, LONG code) {
  switch (code) {
    case 2:
      modes.mode1 |= 0x0C;
      break;
    case 3:
      modes.mode1 |= 0x30;
      break;
    default:
      modes.mode1 &= 0xFFC3;
      break;
  }
  modes.mode2 = code == 1 ? modes.mode2 | 0x18 : modes.mode2 & 0xFFE7;
  return modes;
}

/// What tells the sensors of this map apart.
struct Traits {
  LONG shutterMask = 0x3FFF;  ///< a wider one takes in kShutterHigh
  LONG gainRegister = kGain;
  LONG gainMask = 0x7F;
};

/// Shutter, gain, mirrors and trigger of a sensor with this map.
template <class FamilyProperty>
class Property : public SwitchedProperty<FamilyProperty> {
 public:
  HRESULT SetShutter(LONG lines) override {
    return this->Adjust(kShutter, lines, traits_.shutterMask, [this](LONG value) {
      const HRESULT result = this->SetRegister(kShutterLines, value & 0xFFFF);
      if (FAILED(result) || traits_.shutterMask <= 0xFFFF) return result;
      return this->SetRegister(kShutterHigh, (value & 0xF0000) >> 16);
    });
  }

  HRESULT SetDigitalGlobalGain(LONG gain) override {
    return this->Adjust(kDigitalGlobalGain, gain, traits_.gainMask,
                        [this](LONG value) { return this->SetRegister(traits_.gainRegister, value); });
  }

  HRESULT SetVerMirror(LONG on) override {
    if (on != 0) return SwitchedProperty<FamilyProperty>::SetVerMirror(on);
    const HRESULT result = this->SwitchSetting(kVerMirror, kReadMode2, ~kMirrorRowsOffMask, on);
    return FAILED(result) ? result : FamilyProperty::SetVerMirror(on);
  }

  HRESULT GetExtTrigger(LONG* on) override {
    if (this->Record(kExtTrigger).supported == 0) return FamilyProperty::GetExtTrigger(on);
    return this->ReadSwitch(kReadMode1, kTriggerBit, kExtTrigger, on);
  }

 protected:
  explicit Property(LONG type, const Traits& traits = {})
      : SwitchedProperty<FamilyProperty>(type, kSwitches), traits_(traits) {}

  const Traits& SensorTraits() const { return traits_; }

  bool GetReadModes(ReadModes* modes) {
    return SUCCEEDED(this->GetRegister(kReadMode1, &modes->mode1)) &&
           SUCCEEDED(this->GetRegister(kReadMode2, &modes->mode2));
  }

  bool SetReadModes(const ReadModes& modes) {
    return SUCCEEDED(this->SetRegister(kReadMode1, modes.mode1)) &&
           SUCCEEDED(this->SetRegister(kReadMode2, modes.mode2));
  }

  /// Also kept as the store's raw layout.
  bool SetWindow(const CaptureWindow& window) {
    const LONG columnStart = window.x + kFirstColumn;
    const LONG rowStart = window.y + kFirstRow;
    const LONG columnSize = window.width - 1;
    const LONG rowSize = window.height - 1;
    this->SetRawLayout(columnStart, rowStart, columnSize, rowSize);
    return SUCCEEDED(this->SetRegister(kRowStart, rowStart)) &&
           SUCCEEDED(this->SetRegister(kColumnStart, columnStart)) &&
           SUCCEEDED(this->SetRegister(kRowSize, rowSize)) &&
           SUCCEEDED(this->SetRegister(kColumnSize, columnSize));
  }

 private:
  const Traits traits_;
};

}  // namespace zel::map16
