#pragma once

#include "models/Ccd.h"

/// What some CCD cameras offer on top of their map: one class each, to be put over the map's property.
namespace zel::ccd {

/// External trigger.
template <class Map>
class Triggered : public Map {
 public:
  HRESULT SetExtTrigger(LONG on) override {
    if (!this->IsAttached()) return E_FAIL;
    const LONG pulse = on != 0 ? 1 : 0;
    if (FAILED(this->SetRegister(kTriggerSource, pulse))) return E_FAIL;
    if (FAILED(this->SetRegister(kReadoutStart, pulse))) return E_FAIL;
    return CZELDevicePropertyImpl::SetExtTrigger(on);
  }

  HRESULT GetExtTrigger(LONG* on) override { return this->ReadSwitch(kTriggerSource, 1, kExtTrigger, on); }

 protected:
  explicit Triggered(LONG type) : Map(type) { this->OfferSwitch(kExtTrigger); }

 private:
  static constexpr LONG kTriggerSource = Documented(0x20);  // 0: the generator itself, 1: the line
  static constexpr LONG kReadoutStart =
      Documented(0x21);  // 0: without pause, 1: after an exposure that a pulse began
};

/// The front end's analogue amplifier, in tenths of a dB.
template <class Map>
class AnalogGain : public Map {
 public:
  HRESULT SetAnalogGlobalGain(LONG gain) override {
    return this->Adjust(kAnalogGlobalGain, gain, kHighest,
                        [this](LONG value) { return this->SetRegister(kRegister, value); });
  }

 protected:
  explicit AnalogGain(LONG type) : Map(type) {
    this->Edit(kAnalogGlobalGain) = {.minimum = 0, .maximum = kHighest, .supported = 1};
  }

 private:
  static constexpr LONG kRegister = Documented(0x08);
  static constexpr LONG kHighest = 0xFF;
};

/// Half the pixel clock, made by the timing generator itself.
template <class Map>
class HalfClock : public Map {
 public:
  HRESULT SetHalfClock(LONG on) override {
    if (!this->IsAttached() || FAILED(this->SetRegister(kClockDivider, on != 0))) return E_FAIL;
    return CZELDevicePropertyImpl::SetHalfClock(on);
  }
  HRESULT GetHalfClock(LONG* on) override { return CZELDevicePropertyImpl::GetHalfClock(on); }

 protected:
  explicit HalfClock(LONG type) : Map(type) { this->OfferSwitch(kHalfClock); }

 private:
  static constexpr LONG kClockDivider = Chosen(0x22);
};

}  // namespace zel::ccd
