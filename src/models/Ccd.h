#pragma once

#include "models/ModelProperty.h"

/// What the line's CCD cameras have in common: a timing generator that reads out a window.
namespace zel::ccd {

// The window's registers; each has a second address for its high byte where registers have 8 bits.
constexpr LONG kWindowBase = Chosen(0x30);
constexpr LONG kLeft = 0;  // sensor pixels
constexpr LONG kTop = 2;
constexpr LONG kColumns = 4;  // of the picture
constexpr LONG kLines = 6;
constexpr LONG kSkipping = 8;  // 1: every second pair of columns and of lines

/// `Registers` is the family's property object, or one of SerialRegisters.h over it.
template <class Registers>
class Property : public ModelProperty<Registers> {
 public:
  bool ProgramWindow(const CaptureWindow& window) {
    return WriteSize(kLeft, window.x) && WriteSize(kTop, window.y) && WriteSize(kColumns, window.width) &&
           WriteSize(kLines, window.height) && WriteSize(kSkipping, this->Record(kSubSampleX).current);
  }

  /// What the store says holds from the start, and again after the clock was changed. A camera that does not
  /// take it may still send frames.
  LONG InitializeCamera() override {
    this->SetDigitalGlobalGain(this->Record(kDigitalGlobalGain).current);
    this->SetShutter(this->Record(kShutter).current);
    return ModelProperty<Registers>::InitializeCamera();
  }

 protected:
  explicit Property(LONG type, LONG windowBase = kWindowBase)
      : ModelProperty<Registers>(type), windowBase_(windowBase) {}

  LONG WindowBase() const { return windowBase_; }

 private:
  bool WriteSize(LONG offset, LONG value) {
    const LONG address = windowBase_ + offset;
    if constexpr (requires { requires Registers::kRegisterBytes == 1; }) {
      return SUCCEEDED(this->WriteParts(value, {{address, 0xFF}, {address + 1, 0xFF00, 8}}));
    } else {
      return SUCCEEDED(this->SetRegister(address, value));
    }
  }

  const LONG windowBase_;
};

/// A register that takes a whole setting: the bits that it has, and those that go with every value.
struct SettingRegister {
  LONG address;
  LONG mask = 0xFFFF;
  LONG command = 0;
};

/// Shutter and gain in one register each.
template <class Registers, SettingRegister kShutterRegister, SettingRegister kGainRegister>
class PlainMap : public Property<Registers> {
 public:
  HRESULT SetShutter(LONG lines) override { return Set(kShutter, lines, kShutterRegister); }
  HRESULT SetDigitalGlobalGain(LONG gain) override { return Set(kDigitalGlobalGain, gain, kGainRegister); }

 protected:
  using Property<Registers>::Property;

 private:
  HRESULT Set(LONG id, LONG value, const SettingRegister& in) {
    return this->Adjust(id, value, in.mask,
                        [&](LONG bits) { return this->SetRegister(in.address, bits | in.command); });
  }
};

/// The commonest: shutter in the timing generator, gain in the front end. What lies above the shutter's bits
/// are commands to the generator.
template <class Registers, LONG kShutterCommand = 0>
using Map9A04 = PlainMap<Registers, SettingRegister{Documented(0x9A), 0x1FFF, kShutterCommand},
                         SettingRegister{Documented(0x04), 0x3FF}>;

}  // namespace zel::ccd
