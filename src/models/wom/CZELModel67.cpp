#include <algorithm>
#include <cstdint>
#include <new>

#include "common/BytePacking.h"
#include "models/FinalDevice.h"
#include "models/Map16.h"
#include "transport/wom/CZELDeviceImplWOM.h"
#include "transport/wom/CZELDevicePropertyImplWOM.h"

namespace zel {
namespace {

constexpr LONG kReadModeMask = 0xFFF8;  // bits 0 to 2 of both read modes are cleared for capture
constexpr std::int64_t kTransferUnit = 2048;

}  // namespace

/// 1280 x 1024 sensor with 16-bit registers, behind the WOM controller and FPGA.
class CZELModel67 : public CZELDeviceImplWOM {
 public:
  static constexpr LONG kType = 67;

  class CPropertyImpl : public map16::Property<CZELDevicePropertyImplWOM> {
   public:
    CPropertyImpl() : Property(kType) {
      for (const LONG id : {kHorMirror, kVerMirror, kExtTrigger}) OfferSwitch(id);
      Edit(kHalfClock) = {.minimum = 0, .maximum = 5, .supported = 1};  // divider steps of the FPGA's clock
    }

    HRESULT SetShutter(LONG lines) override {
      lines = std::clamp(lines, Record(kShutter).minimum, Record(kShutter).maximum);
      if (FAILED(SetRegister(map16::kShutterLines, lines))) return E_FAIL;
      return CZELDevicePropertyImplWOM::SetShutter(lines);
    }

    HRESULT SetDigitalGlobalGain(LONG gain) override {
      gain = std::clamp(gain, Record(kDigitalGlobalGain).minimum, Record(kDigitalGlobalGain).maximum);
      if (FAILED(SetRegister(map16::kGain, gain))) return E_FAIL;
      return CZELDevicePropertyImplWOM::SetDigitalGlobalGain(gain);
    }
  };

  LONG PrepareCapture() override;

 protected:
  CPropertyImpl property_;

 private:
  bool ProgramWindow(LONG x, LONG y, LONG width, LONG height);
};

LONG CZELModel67::PrepareCapture() {
  // After a failure nothing may be read into buffers that were never made.
  frame_ = {};
  geometry_ = {};

  LONG x = 0;
  LONG y = 0;
  LONG width = 0;
  LONG height = 0;
  property_.GetROI(&x, &y, &width, &height);
  // Single records of the window can be set so that it leaves the sensor.
  const SensorSize& sensor = ModelOf(kType).full;
  if (width <= 0 || height <= 0 || x + property_.Record(kRoiWidth).current > sensor.width ||
      y + property_.Record(kRoiHeight).current > sensor.height)
    return 0;
  if (!ProgramWindow(x, y, width, height)) return 0;

  const auto bytes = static_cast<LONG>(RoundUp(std::int64_t{width} * height, kTransferUnit));
  frame_ = {.expectedBytes = bytes, .lineBytes = width, .roiWidth = width, .roiHeight = height};
  geometry_ = {.transferPixels = bytes,
               .width = width,
               .height = height,
               .sourceWidth = width,
               .sourceHeight = height};
  return CZELDeviceImplWOM::PrepareCapture();
}

bool CZELModel67::ProgramWindow(LONG x, LONG y, LONG width, LONG height) {
  map16::ReadModes modes;
  if (!property_.GetReadModes(&modes)) return false;
  modes = {modes.mode1 & kReadModeMask, modes.mode2 & kReadModeMask};
  modes = map16::SubSampled(modes, property_.Record(kSubSampleX).current);
  return property_.SetWindow(x, y, width, height) && property_.SetReadModes(modes);
}

CZELDevice* CreateModel67() {
  return new (std::nothrow) FinalDevice<CZELModel67>;
}

}  // namespace zel
