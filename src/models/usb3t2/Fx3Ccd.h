#pragma once

#include "models/Ccd.h"
#include "models/FinalDevice.h"
#include "models/usb3t2/Usb3T2Model.h"

/// The FX3 CCD cameras.
namespace zel {

/// Half clock on top of a map; the generator's divider stands behind the window's registers.
template <class Map>
class Fx3Ccd : public Map {
 public:
  bool ProgramWindow(const CaptureWindow& window) {
    const LONG divider = this->Record(kHalfClock).current != 0 ? 1 : 0;
    return SUCCEEDED(this->SetRegister(this->WindowBase() + kClockDivider, divider)) &&
           Map::ProgramWindow(window);
  }

 protected:
  explicit Fx3Ccd(LONG type, LONG windowBase = ccd::kWindowBase) : Map(type, windowBase) {
    this->OfferSwitch(kHalfClock);
  }

 private:
  static constexpr LONG kClockDivider = Chosen(0x0A);
};

/// Timing generator at 0x8000, front end below.
class Fx3Ccd8003Property
    : public Fx3Ccd<ccd::PlainMap<Usb3T2Property, ccd::SettingRegister{Documented(0x8003)},
                                  ccd::SettingRegister{Documented(0x05)}>> {
 protected:
  explicit Fx3Ccd8003Property(LONG type) : Fx3Ccd(type, kTimingWindow) {}

 private:
  static constexpr LONG kTimingWindow = Chosen(0x8010);
};

}  // namespace zel
