#include <cmath>

#include "models/FinalDevice.h"
#include "models/SwitchedProperty.h"
#include "models/usb3t2/Usb3T2Model.h"

namespace zel {
namespace {

constexpr LONG kGain = Documented(0x35);
constexpr LONG kShutterStep = Documented(0x36);  // each of its four steps doubles the exposure
constexpr LONG kShutterMask = Documented(0x3);
constexpr LONG kClockControl = Chosen(0x3036);  // 1: half the clock
constexpr LONG kColumnStart = Chosen(0x3800);
constexpr LONG kRowStart = Chosen(0x3802);
constexpr LONG kColumns = Chosen(0x3808);
constexpr LONG kRows = Chosen(0x380A);
constexpr LONG kSkipping = Chosen(0x3814);  // the sub-sampling code
constexpr LONG kMirrorRows = Documented(0x3820);
constexpr LONG kMirrorColumns = Documented(0x3821);
constexpr LONG kMirrorBit = Chosen(0x02);  // of both

double Brightness(const Exposure& exposure) {
  return std::ldexp(exposure.gain, exposure.shutter);
}

}  // namespace

/// 1280 x 720 sensor with an exposure in steps, behind the FX3 controller.
class CZELModel97 : public AutoExposedModel<CZELModel97> {
 public:
  static constexpr LONG kType = 97;
  static constexpr ExposureControl kExposureControl{
      .least = {.shutter = 0, .gain = 1}, .most = {.shutter = 3, .gain = 63}, .brightness = Brightness};

  class CPropertyImpl : public SwitchedProperty<Usb3T2Property> {
   public:
    CPropertyImpl()
        : SwitchedProperty(
              kType, {.horMirror = {kMirrorColumns, kMirrorBit}, .verMirror = {kMirrorRows, kMirrorBit}}) {
      OfferSwitches({kHorMirror, kVerMirror, kHalfClock, kAuxValue3, kAuxValue4});
    }

    HRESULT SetShutter(LONG step) override {
      return Adjust(kShutter, step, kShutterMask,
                    [this](LONG value) { return SetRegister(kShutterStep, value & kShutterMask); });
    }

    HRESULT SetDigitalGlobalGain(LONG gain) override {
      return Adjust(kDigitalGlobalGain, gain, 0x3F, [this](LONG value) { return SetRegister(kGain, value); });
    }

    bool ProgramWindow(const CaptureWindow& window) {
      const std::pair<LONG, LONG> writes[] = {{kColumnStart, window.x},
                                              {kRowStart, window.y},
                                              {kColumns, window.width},
                                              {kRows, window.height},
                                              {kSkipping, Record(kSubSampleX).current},
                                              {kClockControl, Record(kHalfClock).current != 0}};
      for (const auto& [address, value] : writes) {
        if (FAILED(SetRegister(address, value))) return false;
      }
      return true;
    }
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel97() {
  return NewDevice<CZELModel97>();
}

}  // namespace zel
