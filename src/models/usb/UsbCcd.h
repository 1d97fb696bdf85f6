#pragma once

#include "models/CcdOptions.h"
#include "models/CcdSplit.h"
#include "models/FinalDevice.h"
#include "models/SerialRegisters.h"
#include "models/usb/UsbModel.h"

/// The USB 2.0 CCD cameras: their register maps with what all types of a map offer.
namespace zel {

/// Their timing, in pixel clocks.
template <class Model>
class UsbCcd : public UsbModel<Model> {
 public:
  static constexpr UsbTiming kTiming = {.lineBlanking = 504};
};

/// Registers of the FPGA that makes the sensor's timing.
template <class Registers>
class FpgaRegisters : public Registers {
 protected:
  HRESULT ProgramFpga(LONG address, LONG value) {
    if (CZELDevicePropertyImplUSB::SetFpgaRegister(address, value) == 0) return E_FAIL;
    CurrentDriverHost().NoteRegister(DriverHost::RegisterAccess::Write,
                                     static_cast<std::uint32_t>(kNotedFrom + address),
                                     static_cast<std::uint32_t>(value));
    return S_OK;
  }

 private:
  static constexpr LONG kNotedFrom = 0x100;  // apart from the sensor's own registers
};

constexpr LONG kFpgaGain = Chosen(0x04);
constexpr LONG kFpgaShutterLines = Chosen(0x9A);

/// Shutter and gain in the FPGA.
template <class Registers>
class FpgaTimed : public ccd::Property<FpgaRegisters<Registers>> {
 public:
  HRESULT SetShutter(LONG lines) override {
    return this->AdjustInRange(kShutter, lines,
                               [this](LONG value) { return this->ProgramFpga(kFpgaShutterLines, value); });
  }

  HRESULT SetDigitalGlobalGain(LONG gain) override {
    return this->AdjustInRange(kDigitalGlobalGain, gain,
                               [this](LONG value) { return this->ProgramFpga(kFpgaGain, value); });
  }

 protected:
  using ccd::Property<FpgaRegisters<Registers>>::Property;
};

constexpr LONG kShutterCommand = Documented(0x802000);  // the timing generator's word "exposure, now"

using SplitCcdProperty = ccd::Triggered<ccd::AnalogGain<ccdsplit::Property<ByteRegisters<UsbProperty>>>>;
using SplitCcdProperty12Bit =
    ccd::Triggered<ccd::AnalogGain<ccdsplit::Property<ByteRegisters<UsbProperty>, 12, 8>>>;
using WideCcdProperty =
    ccd::Triggered<ccd::AnalogGain<ccd::Map9A04<LongRegisters<UsbProperty>, kShutterCommand>>>;

}  // namespace zel
