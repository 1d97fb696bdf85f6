#pragma once

#include "models/SwitchedProperty.h"

/// The register map of the line's 752 x 480 CMOS sensor: 16-bit registers, mirrors and sub-sampling in the
/// read mode.
namespace zel::wide_vga {

constexpr LONG kColumnStart = Chosen(0x01);
constexpr LONG kRowStart = Chosen(0x02);
constexpr LONG kRows = Chosen(0x03);
constexpr LONG kColumns = Chosen(0x04);
constexpr LONG kShutterLines = Documented(0x0B);
constexpr LONG kReadMode = Documented(0x0D);
constexpr LONG kGain = Documented(0x35);

constexpr LONG kMirrorRowsBit = Chosen(0x0010);     // of kReadMode
constexpr LONG kMirrorColumnsBit = Chosen(0x0020);  // of kReadMode
constexpr LONG kBinningMask = Chosen(0x000F);       // of kReadMode: rows in bits 0 and 1, columns in 2 and 3

constexpr LONG kShutterMask = 0x7FFF;
constexpr LONG kGainMask = 0x7F;

// Dark columns and rows before the picture.
constexpr LONG kFirstColumn = 1;
constexpr LONG kFirstRow = 4;

/// How the sensor stands in the camera. On its side, its rows are the picture's columns.
enum class Mounting { Upright, OnItsSide };

constexpr SensorSwitches kUpright{.horMirror = {kReadMode, kMirrorColumnsBit},
                                  .verMirror = {kReadMode, kMirrorRowsBit}};
constexpr SensorSwitches kOnItsSide{.horMirror = kUpright.verMirror, .verMirror = kUpright.horMirror};

/// Window, shutter, gain and mirrors of a sensor with this map.
template <class FamilyProperty>
class Property : public SwitchedProperty<FamilyProperty> {
 public:
  HRESULT SetShutter(LONG lines) override {
    return this->Adjust(kShutter, lines, kShutterMask,
                        [this](LONG value) { return this->SetRegister(kShutterLines, value); });
  }

  HRESULT SetDigitalGlobalGain(LONG gain) override {
    return this->Adjust(kDigitalGlobalGain, gain, kGainMask,
                        [this](LONG value) { return this->SetRegister(kGain, value); });
  }

  bool ProgramWindow(const CaptureWindow& window) {
    const CaptureWindow onSensor = mounting_ == Mounting::Upright
                                       ? window
                                       : CaptureWindow{window.y, window.x, window.height, window.width};
    const LONG code = this->Record(kSubSampleX).current;
    return SUCCEEDED(this->SetRegister(kColumnStart, onSensor.x + kFirstColumn)) &&
           SUCCEEDED(this->SetRegister(kRowStart, onSensor.y + kFirstRow)) &&
           SUCCEEDED(this->SetRegister(kRows, onSensor.height)) &&
           SUCCEEDED(this->SetRegister(kColumns, onSensor.width)) &&
           SUCCEEDED(this->ModifyRegister(kReadMode, ~kBinningMask, code | code << 2));
  }

 protected:
  explicit Property(LONG type, Mounting mounting = Mounting::Upright)
      : SwitchedProperty<FamilyProperty>(type, mounting == Mounting::Upright ? kUpright : kOnItsSide),
        mounting_(mounting) {}

 private:
  const Mounting mounting_;
};

}  // namespace zel::wide_vga
