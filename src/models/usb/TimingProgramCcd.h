#pragma once

#include "models/usb/UsbCcd.h"

namespace zel {

/// Settings of CCD cameras whose FPGA takes a timing program.
class TimingProgramCcdProperty
    : public ccd::Triggered<ccd::AnalogGain<FpgaTimed<LongRegisters<UsbProperty>>>> {
 public:
  HRESULT SetFpgaRegister(LONG address, LONG value) override { return ProgramFpga(address, value); }

  /// The timing program, up to 60 bytes. A new program begins with its own exposure.
  HRESULT SetModelOption(const unsigned char* program, LONG length) override {
    const HRESULT result = Triggered::SetModelOption(program, length);
    if (FAILED(result)) return result;
    return FAILED(SetShutter(Record(kShutter).current)) ? E_FAIL : result;
  }

 protected:
  using Triggered::Triggered;
};

}  // namespace zel
