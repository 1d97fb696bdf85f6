#include <cmath>

#include "models/FinalDevice.h"
#include "models/SwitchedProperty.h"
#include "models/usb3t2/Usb3T2Model.h"

namespace zel {
namespace {

constexpr LONG kSkipping = Chosen(0x06);  // the sub-sampling code
constexpr LONG kMirrors = Documented(0x07);
constexpr LONG kMirrorRowsBit = Chosen(0x01);
constexpr LONG kMirrorColumnsBit = Chosen(0x02);
constexpr LONG kClockControl = Chosen(0x0B);  // 1: half the clock

// Values in bytes, low byte first.
constexpr LONG kGain = Documented(0x14);          // tenths of a decibel
constexpr LONG kShutterLines = Documented(0x20);  // three bytes
constexpr LONG kRowStart = Chosen(0x3A);
constexpr LONG kRows = Chosen(0x3C);
constexpr LONG kColumnStart = Chosen(0x3E);
constexpr LONG kColumns = Chosen(0x40);

double Brightness(const Exposure& exposure) {
  return exposure.shutter * std::pow(10.0, exposure.gain / 200.0);
}

}  // namespace

/// 1280 x 960 sensor with registers of one byte, behind the FX3 controller.
class CZELModel96 : public AutoExposedModel<CZELModel96> {
 public:
  static constexpr LONG kType = 96;
  static constexpr ExposureControl kExposureControl{
      .least = {.shutter = 2, .gain = 0}, .most = {.shutter = 958, .gain = 720}, .brightness = Brightness};

  class CPropertyImpl : public SwitchedProperty<Usb3T2Property> {
   public:
    CPropertyImpl()
        : SwitchedProperty(
              kType, {.horMirror = {kMirrors, kMirrorColumnsBit}, .verMirror = {kMirrors, kMirrorRowsBit}}) {
      OfferSwitches({kHorMirror, kVerMirror, kHalfClock, kAuxValue3, kAuxValue4});
    }

    HRESULT SetShutter(LONG lines) override {
      return Adjust(kShutter, lines, 0xFFFFFF, [this](LONG value) {
        return WriteParts(
            value,
            {{kShutterLines, 0xFF}, {kShutterLines + 1, 0xFF00, 8}, {kShutterLines + 2, 0xFF0000, 16}});
      });
    }

    HRESULT SetDigitalGlobalGain(LONG gain) override {
      return Adjust(kDigitalGlobalGain, gain, 0x3FF, [this](LONG value) {
        return WriteParts(value, {{kGain, 0xFF}, {kGain + 1, 0x300, 8}});
      });
    }

    bool ProgramWindow(const CaptureWindow& window) {
      const std::pair<LONG, LONG> values[] = {
          {kColumnStart, window.x}, {kRowStart, window.y}, {kColumns, window.width}, {kRows, window.height}};
      for (const auto& [address, value] : values) {
        if (FAILED(WriteParts(value, {{address, 0xFF}, {address + 1, 0xFF00, 8}}))) return false;
      }
      return SUCCEEDED(SetRegister(kSkipping, Record(kSubSampleX).current)) &&
             SUCCEEDED(SetRegister(kClockControl, Record(kHalfClock).current != 0));
    }
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel96() {
  return NewDevice<CZELModel96>();
}

}  // namespace zel
