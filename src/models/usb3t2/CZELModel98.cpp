#include <cstdint>
#include <new>

#include "common/BytePacking.h"
#include "models/FinalDevice.h"
#include "models/Map16.h"
#include "models/usb3t2/AutoExposure.h"
#include "models/usb3t2/Usb3T2Property.h"
#include "transport/usb3t2/CZELDeviceImplUSB3T2.h"

namespace zel {
namespace {

// Registers beyond those of the shared map.
constexpr LONG kShutterHigh = 0x08;  // bits 16 to 19 of the lines
constexpr LONG kClockControl = 0x0A;
constexpr LONG kHalfClockBit = 0x0001;  // of kClockControl

// The transfer has room for dark columns and rows around the picture, in two bytes a pixel.
constexpr std::int64_t kSpareColumns = 128;
constexpr std::int64_t kSpareRows = 128;
constexpr std::int64_t kTransferUnit = 8192;

}  // namespace

/// 3096 x 2080 sensor with 16-bit registers, behind the FX3 controller.
class CZELModel98 : public CZELDeviceImplUSB3T2 {
 public:
  static constexpr LONG kType = 98;

  class CPropertyImpl : public map16::Property<Usb3T2Property> {
   public:
    CPropertyImpl() : Property(kType) {
      for (const LONG id : {kHorMirror, kVerMirror, kExtTrigger, kHalfClock, kAuxValue3, kAuxValue4})
        OfferSwitch(id);
    }

    HRESULT SetShutter(LONG lines) override {
      return SetClamped(kShutter, lines, [this](LONG value) {
        const HRESULT result = SetRegister(map16::kShutterLines, value & 0xFFFF);
        return FAILED(result) ? result : SetRegister(kShutterHigh, (value & 0xF0000) >> 16);
      });
    }

    HRESULT SetDigitalGlobalGain(LONG gain) override {
      return SetClamped(kDigitalGlobalGain, gain,
                        [this](LONG value) { return SetRegister(map16::kGain, value); });
    }
  };

  LONG PrepareCapture() override;
  LONG ReadFrame(unsigned char* buffer) override;

 protected:
  CPropertyImpl property_;

 private:
  bool ProgramWindow(LONG x, LONG y, LONG width, LONG height);
};

LONG CZELModel98::PrepareCapture() {
  geometry_ = {};
  SetFrame({});

  LONG x = 0;
  LONG y = 0;
  LONG width = 0;
  LONG height = 0;
  property_.GetROI(&x, &y, &width, &height);
  // Single records of the window can be set so that it leaves the sensor.
  const SensorSize& sensor = ModelOf(kType).full;
  const bool onSensor = width > 0 && height > 0 && x + property_.Record(kRoiWidth).current <= sensor.width &&
                        y + property_.Record(kRoiHeight).current <= sensor.height;
  if (onSensor && ProgramWindow(x, y, width, height)) {
    const std::int64_t bytes = RoundUp((width + kSpareColumns) * (height + kSpareRows) * 2, kTransferUnit);
    SetFrame({.frameBytes = static_cast<LONG>(bytes),
              .lineBytes = width,
              .frameWidth = width,
              .frameHeight = height});
    geometry_ = {.transferPixels = static_cast<LONG>(bytes / 2),
                 .width = width,
                 .height = height,
                 .sourceWidth = width,
                 .sourceHeight = height};
  }
  // Without sizes the family prepares nothing, and no frame can be read.
  return CZELDeviceImplUSB3T2::PrepareCapture();
}

bool CZELModel98::ProgramWindow(LONG x, LONG y, LONG width, LONG height) {
  map16::ReadModes modes;
  if (!property_.GetReadModes(&modes)) return false;
  // From no sub-sampling on: its bits only ever add to those of the capture before.
  modes = map16::SubSampled(map16::SubSampled(modes, 0), property_.Record(kSubSampleX).current);
  const LONG clock = property_.Record(kHalfClock).current != 0 ? kHalfClockBit : 0;
  return property_.SetReadModes(modes) && SUCCEEDED(property_.SetRegister(kClockControl, clock)) &&
         property_.SetWindow(x, y, width, height);
}

LONG CZELModel98::ReadFrame(unsigned char* buffer) {
  const Usb3T2Frame frame = CopyFrame();
  if (CZELDeviceImplUSB3T2::ReadFrame(buffer) == 0) return 0;
  ControlExposure(property_, AeTarget(),
                  {.samples = buffer,
                   .width = frame.frameWidth,
                   .height = frame.frameHeight,
                   .bytesPerSample = IsEightBitTransfer() ? 1 : 2});
  return 1;
}

CZELDevice* CreateModel98() {
  return new (std::nothrow) FinalDevice<CZELModel98>;
}

}  // namespace zel
