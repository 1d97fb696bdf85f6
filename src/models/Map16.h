#pragma once

#include "models/ModelProperty.h"

/// The register map that many of the line's CMOS sensors share: 16-bit registers for window, read modes,
/// shutter in lines and gain.
namespace zel::map16 {

constexpr LONG kRowStart = 0x01;
constexpr LONG kColumnStart = 0x02;
constexpr LONG kRowSize = 0x03;     // rows - 1
constexpr LONG kColumnSize = 0x04;  // columns - 1
constexpr LONG kShutterLines = 0x09;
constexpr LONG kReadMode1 = 0x1E;
constexpr LONG kReadMode2 = 0x20;
constexpr LONG kGain = 0x35;
constexpr LONG kThreshControl = 0x5F;

constexpr LONG kTriggerBit = 0x0100;         // of kReadMode1
constexpr LONG kMirrorRowsBit = 0x8000;      // of kReadMode2: vertical mirror
constexpr LONG kMirrorColumnsBit = 0x4000;   // of kReadMode2: horizontal mirror
constexpr LONG kMirrorRowsOffMask = 0x7F7F;  // bit 7 belongs to the vertical mirror and goes with it
constexpr LONG kAutoThreshBit = 0x0080;      // of kThreshControl

// Dark columns and rows before the picture.
constexpr LONG kFirstColumn = 20;
constexpr LONG kFirstRow = 12;

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

/// Mirrors, trigger and the colour phase of a sensor with this map.
template <class FamilyProperty>
class Property : public ModelProperty<FamilyProperty> {
 public:
  HRESULT SetHorMirror(LONG on) override {
    if (FAILED(this->SwitchBits(kReadMode2, kMirrorColumnsBit, on != 0))) return E_FAIL;
    return FamilyProperty::SetHorMirror(on);
  }

  HRESULT SetVerMirror(LONG on) override {
    const HRESULT programmed = on != 0 ? this->SwitchBits(kReadMode2, kMirrorRowsBit, true)
                                       : this->ModifyRegister(kReadMode2, kMirrorRowsOffMask, 0);
    if (FAILED(programmed)) return E_FAIL;
    return FamilyProperty::SetVerMirror(on);
  }

  HRESULT SetExtTrigger(LONG on) override {
    if (!this->IsAttached()) return E_FAIL;
    if (FAILED(this->SwitchBits(kReadMode1, kTriggerBit, on != 0))) return E_FAIL;
    return FamilyProperty::SetExtTrigger(on);
  }

  HRESULT GetExtTrigger(LONG* on) override {
    return this->ReadSwitch(kReadMode1, kTriggerBit, kExtTrigger, on);
  }

  /// Sub-sampling code k divides both sides by 2 to the power k.
  HRESULT GetROI(LONG* x, LONG* y, LONG* width, LONG* height) override {
    const LONG code = this->Record(kSubSampleX).current;
    Put(x, this->Record(kRoiLeft).current);
    Put(y, this->Record(kRoiTop).current);
    Put(width, this->Record(kRoiWidth).current >> code);
    Put(height, this->Record(kRoiHeight).current >> code);
    return S_OK;
  }

  /// A window that starts at an odd column begins with the neighbour's colour.
  LONG UpdateDerivedSizes() override {
    const LONG phase = FamilyProperty::UpdateDerivedSizes();
    return this->Record(kRoiLeft).current % 2 != 0 ? phase ^ 2 : phase;
  }

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

 protected:
  using ModelProperty<FamilyProperty>::ModelProperty;
};

}  // namespace zel::map16
