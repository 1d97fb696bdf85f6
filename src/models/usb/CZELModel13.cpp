#include <cstdint>

#include "common/BytePacking.h"
#include "models/FinalDevice.h"
#include "models/Map16.h"
#include "property/OutParameter.h"
#include "transport/usb/CZELDeviceImplUSB.h"
#include "transport/usb/CZELDevicePropertyImplUSB.h"

namespace zel {
namespace {

constexpr LONG kShutterMask = 0x3FFF;
constexpr LONG kGainMask = 0x7F;
constexpr LONG kStoredGainMask = 0x3FF;

// Timing in pixel clocks.
constexpr std::int64_t kLineBlanking = 244;
constexpr std::int64_t kShortestLine = 553;
constexpr LONG kNarrowestTimedWidth = 309;  // below it the line takes kShortestLine
constexpr LONG kFrameExtra = 241;
constexpr std::int64_t kTransferUnit = 1024;

// The I/O port: inputs are read in bits 0 and 1, outputs written in bits 2 and 3.
constexpr LONG kAuxInput = 0x1;
constexpr LONG kAuxOutput = 0x4;
constexpr LONG kAuxOutputOffMask = 0xB;

}  // namespace

/// 1280 x 1024 sensor with 16-bit registers, behind the USB 2.0 controller.
class CZELModel13 : public CZELDeviceImplUSB {
 public:
  static constexpr LONG kType = 13;

  class CPropertyImpl : public map16::Property<CZELDevicePropertyImplUSB> {
   public:
    CPropertyImpl() : Property(kType) {
      for (const LONG id : {kHorMirror, kVerMirror, kExtTrigger, kHalfClock, kAutoThresh}) OfferSwitch(id);
      settings_.inputFormat = 0;
      SetOutputFormat(5);
    }

    LONG InitializeCamera() override { return 1; }

    HRESULT SetDigitalGlobalGain(LONG gain) override {
      if (FAILED(SetRegister(map16::kGain, gain & kGainMask))) return E_FAIL;
      return CZELDevicePropertyImpl::SetDigitalGlobalGain(gain & kStoredGainMask);
    }

    HRESULT GetDigitalGlobalGain(LONG* gain) override {
      LONG value = 0;
      if (FAILED(GetRegister(map16::kGain, &value))) return E_FAIL;
      Edit(kDigitalGlobalGain).current = value & kGainMask;
      Put(gain, Record(kDigitalGlobalGain).current);
      return S_OK;
    }

    HRESULT SetShutter(LONG lines) override {
      if (FAILED(SetRegister(map16::kShutterLines, lines & kShutterMask))) return E_FAIL;
      return CZELDevicePropertyImpl::SetShutter(lines & kShutterMask);
    }

    HRESULT SetAutoThresh(LONG on) override {
      if (FAILED(SwitchBits(map16::kThreshControl, map16::kAutoThreshBit, on != 0))) return E_FAIL;
      return CZELDevicePropertyImpl::SetAutoThresh(on);
    }

    HRESULT GetAutoThresh(LONG* on) override {
      return ReadSwitch(map16::kThreshControl, map16::kAutoThreshBit, kAutoThresh, on);
    }

    /// Takes any window; the next capture preparation refuses one that does not lie on the sensor.
    HRESULT SetROI(LONG x, LONG y, LONG width, LONG height) override {
      Edit(kRoiLeft).current = x;
      Edit(kRoiTop).current = y;
      Edit(kRoiWidth).current = width;
      Edit(kRoiHeight).current = height;
      return S_OK;
    }

    /// Always returns 1. Sub-sampling works on the full frame only, so reading the window resets it then.
    HRESULT GetROI(LONG* x, LONG* y, LONG* width, LONG* height) override {
      const LONG code = Record(kSubSampleX).current;
      if (code > 0) SetROI(0, 0, Record(kRoiWidth).maximum, Record(kRoiHeight).maximum);
      const LONG divisor = code >= 1 && code <= 3 ? 1 << code : 1;
      Put(x, Record(kRoiLeft).current);
      Put(y, Record(kRoiTop).current);
      Put(width, Record(kRoiWidth).current / divisor);
      Put(height, Record(kRoiHeight).current / divisor);
      return 1;
    }

    HRESULT SetAuxValue3(LONG on) override {
      LONG port = 0;
      if (FAILED(GetIO(&port))) return E_FAIL;
      port <<= 2;
      port = on != 0 ? port | kAuxOutput : port & kAuxOutputOffMask;
      if (FAILED(SetIO(port))) return E_FAIL;
      auxOutput_ = on != 0;
      return S_OK;
    }

    HRESULT GetAuxValue3(LONG* on) override {
      LONG port = 0;
      if (FAILED(GetIO(&port))) return E_FAIL;
      Put(on, port & kAuxInput);
      return S_OK;
    }

    bool ProgramWindow(const CaptureWindow& window) {
      map16::ReadModes modes;
      if (!GetReadModes(&modes)) return false;
      modes = map16::SubSampled(modes, Record(kSubSampleX).current);
      return SetReadModes(modes) && SetWindow(window);
    }

   private:
    LONG auxOutput_ = 0;  ///< last state of the output
  };

  CZELModel13() { frame_.useAltRead = true; }

  LONG PrepareCapture() override;
  LONG ReadFrame(unsigned char* buffer) override {
    return ReadTransfer(buffer, frame_.expectedBytes, ReadKind());
  }

 protected:
  CPropertyImpl property_;

 private:
  bool ComputeFrame(LONG width, LONG height);
};

/// False for a window whose frame can't be read.
bool CZELModel13::ComputeFrame(LONG width, LONG height) {
  const std::int64_t line = width >= kNarrowestTimedWidth ? width + kLineBlanking : kShortestLine;
  const std::int64_t bytes = (line - 2) * (height - 2) + kFrameExtra;
  if (bytes <= 0) return false;
  frame_.roiHeight = height;
  frame_.roiWidth = width;
  frame_.lineLength = static_cast<LONG>(line);
  frame_.frameExtra = kFrameExtra;
  frame_.frameClocks = static_cast<LONG>(RoundUp(line * height + kFrameExtra, kTransferUnit));
  frame_.expectedBytes = static_cast<LONG>(RoundUp(bytes, kTransferUnit));
  return true;
}

LONG CZELModel13::PrepareCapture() {
  // After a failure nothing may be read into buffers that were never made.
  frame_.frameClocks = frame_.frameExtra = frame_.lineLength = frame_.expectedBytes = 0;
  geometry_ = {};

  const auto window = property_.WantedWindow();
  if (!window) return 0;
  if (!ComputeFrame(window->width, window->height) || !property_.ProgramWindow(*window)) {
    frame_.expectedBytes = 0;
    return 0;
  }

  // The controller packs the picture's rows at the start of the transfer.
  geometry_ = {.transferPixels = frame_.expectedBytes,
               .width = window->width,
               .height = window->height,
               .sourceWidth = window->width,
               .sourceHeight = window->height};
  CZELDeviceImplUSB::PrepareCapture();
  return 1;
}

CZELDevice* CreateModel13() {
  return NewDevice<CZELModel13>();
}

}  // namespace zel
