#pragma once

#include "models/Map3040.h"
#include "models/usb3/DiskModel.h"

namespace zel::map3040 {

/// A sensor with this map behind a USB 3.0 disk.
using DiskSensor = Property<DiskProperty>;

/// A large sensor that keeps bits of its own next to the settings: they are read first and stay.
class ReadFirstDiskSensor : public DiskSensor {
 public:
  HRESULT SetShutter(LONG lines) override {
    return Adjust(kShutter, lines, shutterBits_,
                  [this](LONG value) { return ModifyRegister(kCoarseShutter, ~shutterBits_, value); });
  }

  HRESULT SetDigitalGlobalGain(LONG gain) override {
    return Adjust(kDigitalGlobalGain, gain, kGainBits,
                  [this](LONG value) { return ModifyRegister(kGain, ~kGainBits, value); });
  }

 protected:
  ReadFirstDiskSensor(LONG type, LONG shutterBits) : DiskSensor(type), shutterBits_(shutterBits) {
    OfferSwitches({kHorMirror, kVerMirror});
  }

 private:
  static constexpr LONG kGainBits = 0x7F;

  const LONG shutterBits_;
};

/// A camera whose frames take long: waits for one instead of reporting at once that none is ready.
template <class Model>
class SlowDiskModel : public DiskModel<Model> {
 public:
  LONG ReadFrame(unsigned char* buffer) override {
    for (int tries = 0; tries < kTries; ++tries) {
      if (DiskModel<Model>::ReadFrame(buffer) != 0) return 1;
      CurrentDriverHost().Sleep(kRetryMs);
    }
    return 0;
  }

 private:
  // Together much less than an application waits for a command.
  static constexpr int kTries = 10;
  static constexpr std::uint32_t kRetryMs = 4;
};

}  // namespace zel::map3040
