#include <algorithm>
#include <cstring>
#include <vector>

#include "models/FinalDevice.h"
#include "models/ModelProperty.h"
#include "property/OutParameter.h"
#include "transport/usb3/CZELDeviceImplUSB3.h"
#include "transport/usb3/CZELDevicePropertyImplUSB3.h"

namespace zel {
namespace {

// The CCD: lines are read out in two fields of half of them each.
constexpr LONG kSensorWidth = 4896;
constexpr LONG kSensorLines = 3264;
constexpr LONG kFieldLines = kSensorLines / 2;

// Exposure ends at the latest when a frame does: its lines and 71 of blanking, half of both when binned.
constexpr LONG kShortestShutter = 1;
constexpr LONG kFrameShutter = 3335;
constexpr LONG kBinnedFrameShutter = 1668;

// Registers of the analogue front end.
constexpr LONG kGain = 0x05;
constexpr LONG kGainAccess = 0x3003;  // 1: the front end takes its next value

// Registers of the timing generator.
constexpr LONG kShutterLines = 0x2004;
constexpr LONG kWindowLeft = 0x2010;  // the window in sensor pixels
constexpr LONG kWindowTop = 0x2012;
constexpr LONG kWindowColumns = 0x2014;
constexpr LONG kWindowLines = 0x2016;
constexpr LONG kBinning = 0x2018;
constexpr LONG kVariantAccess = 0x3000;       // 0: the readout variant may be changed, 1: it is in use
constexpr LONG kVariantProgressive = 0x3001;  // 1: lines in order, 0: field by field
constexpr LONG kVariantOddFirst = 0x3002;     // the field of the odd lines comes first

constexpr LONG kBinLinesBit = 1;  // of kBinning
constexpr LONG kBinColumnsBit = 2;

// Bits of the value that selects the readout variant.
constexpr LONG kAltPathABit = 1;
constexpr LONG kAltPathBBit = 2;

/// What the timing generator reads out.
struct Timing {
  LONG left = 0;
  LONG top = 0;
  LONG columns = kSensorWidth;
  LONG lines = kSensorLines;
  LONG binning = 0;

  bool operator==(const Timing&) const = default;
};

/// How a picture lies in a raw frame that came field by field.
struct FieldLayout {
  std::size_t width = 0;        ///< bytes of a line
  LONG lines = 0;               ///< of both fields
  std::size_t secondField = 0;  ///< where it starts
};

/// Puts the lines of two fields in picture order; the first field holds the picture's lines from `First` on,
/// every other one.
template <int First>
void WeaveFields(unsigned char* frame, unsigned char* fields, const FieldLayout& layout) {
  std::memcpy(fields, frame, layout.width * static_cast<std::size_t>(layout.lines));
  const unsigned char* source[] = {fields, fields + layout.secondField};
  for (LONG line = 0; line < layout.lines; ++line, frame += layout.width) {
    const unsigned char*& from = source[(line + First) % 2];
    std::memcpy(frame, from, layout.width);
    from += layout.width;
  }
}

}  // namespace

/// 4896 x 3264 CCD behind a USB 3.0 disk. `SetModelValue4` and `SetModelValue5` sum pairs of lines and of
/// columns, `SetModelValue1` selects the readout variant: bit 0 field by field (altPathA), bit 1 the field of
/// the odd lines first (altPathB). All three act from the next `Play` on; the pictures stay upright and
/// whole.
class CZELModel78 : public CZELDeviceImplUSB3 {
 public:
  static constexpr LONG kType = 78;

  class CProperty : public ModelProperty<CZELDevicePropertyImplUSB3> {
   public:
    explicit CProperty(CZELModel78& camera) : ModelProperty(kType), camera_(camera) {}

    /// Values beyond the range are clamped.
    HRESULT SetShutter(LONG lines) override {
      const LONG clamped = Clamped(kShutter, lines);
      const HRESULT result = SetRegister(kShutterLines, clamped);
      return FAILED(result) ? result : CZELDevicePropertyImpl::SetShutter(clamped);
    }

    /// Values beyond the range are clamped.
    HRESULT SetDigitalGlobalGain(LONG gain) override {
      const LONG clamped = Clamped(kDigitalGlobalGain, gain);
      HRESULT result = SetRegister(kGainAccess, 1);
      if (SUCCEEDED(result)) result = SetRegister(kGain, clamped);
      return FAILED(result) ? result : CZELDevicePropertyImpl::SetDigitalGlobalGain(clamped);
    }

    /// Left and top in sensor pixels; the size is that of the picture, after binning.
    HRESULT GetROI(LONG* x, LONG* y, LONG* width, LONG* height) override {
      Put(x, Record(kRoiLeft).current);
      Put(y, Record(kRoiTop).current);
      Put(width, Record(kRoiWidth).current * readout_.outWidth / readout_.sensorWidth);
      Put(height, Record(kRoiHeight).current * readout_.sensorLines / kSensorLines);
      return S_OK;
    }

    /// 0..3: see the class.
    HRESULT SetModelValue1(LONG variant) override {
      if (variant < 0 || variant > (kAltPathABit | kAltPathBBit)) return E_INVALIDARG;
      camera_.altPathA_ = (variant & kAltPathABit) != 0;
      camera_.altPathB_ = (variant & kAltPathBBit) != 0;
      camera_.pathPending_ = 1;
      return S_OK;
    }
    HRESULT GetModelValue1(LONG* variant) override {
      Put(variant, camera_.Variant());
      return S_OK;
    }

    HRESULT SetModelValue4(LONG on) override { return SetBinning(&binLines_, on); }
    HRESULT GetModelValue4(LONG* on) override {
      Put(on, binLines_);
      return S_OK;
    }
    HRESULT SetModelValue5(LONG on) override { return SetBinning(&binColumns_, on); }
    HRESULT GetModelValue5(LONG* on) override {
      Put(on, binColumns_);
      return S_OK;
    }

    /// A camera that was just opened has everything at reset.
    LONG InitializeCamera() override {
      programmed_ = {};
      camera_.programmedVariant_ = 0;
      camera_.pathPending_ = camera_.Variant() != 0;
      return 1;
    }

    /// The camera has no reset command, and its next program expects it as it came.
    HRESULT DetachDevice() override {
      if (programmed_ != Timing{}) ProgramTiming({});
      if (camera_.programmedVariant_ != 0) camera_.ProgramVariant(0);
      return CZELDevicePropertyImplUSB3::DetachDevice();
    }

    LONG UpdateDerivedSizes() override {
      const LONG phase = CZELDevicePropertyImpl::UpdateDerivedSizes();
      return Record(kRoiLeft).current % 2 != 0 ? phase ^ 2 : phase;
    }

    /// Fits the shutter and its range to the binning; the exposure keeps its place in the range.
    void UpdateReadout() {
      readout_ = {.outWidth = binColumns_ != 0 ? kSensorWidth / 2 : kSensorWidth,
                  .outLines = kFieldLines,
                  .sensorWidth = kSensorWidth,
                  .sensorLines = binLines_ != 0 ? kFieldLines : kSensorLines};
      PropertyRecord& shutter = Edit(kShutter);
      const double place = static_cast<double>(Clamped(kShutter, shutter.current)) /
                           std::max<LONG>(shutter.maximum - shutter.minimum, 1);
      shutter.minimum = kShortestShutter;
      shutter.maximum = binLines_ != 0 ? kBinnedFrameShutter : kFrameShutter;
      const LONG lines =
          static_cast<LONG>(place * (shutter.maximum - shutter.minimum) + 0.5) + shutter.minimum;
      // Without a camera the next capture preparation brings the value there.
      if (FAILED(SetShutter(lines))) shutter.current = Clamped(kShutter, lines);
    }

    /// Tells the camera window and binning. It knows the whole frame by itself; anything else is told every
    /// time, as it may have been unplugged meanwhile.
    bool UpdateTiming() {
      const Timing wanted = Wanted();
      if (timingDirty_ == 0 && wanted == Timing{} && programmed_ == wanted) return true;
      if (!ProgramTiming(wanted)) return false;
      timingDirty_ = 0;
      return true;
    }

    /// Summed lines leave one field.
    bool HasTwoFields() const { return binLines_ == 0; }

   private:
    /// In pixels of the picture, in pixels of the sensor.
    struct Readout {
      LONG outWidth = kSensorWidth;
      LONG outLines = kFieldLines;  ///< of a field
      LONG sensorWidth = kSensorWidth;
      LONG sensorLines = kSensorLines;  ///< that reach the output in a frame
    };

    HRESULT SetBinning(LONG* flag, LONG on) {
      *flag = on;
      UpdateReadout();
      timingDirty_ = 1;
      return S_OK;
    }

    Timing Wanted() const {
      return {.left = Record(kRoiLeft).current,
              .top = Record(kRoiTop).current,
              .columns = Record(kRoiWidth).current,
              .lines = Record(kRoiHeight).current,
              .binning = (binLines_ != 0 ? kBinLinesBit : 0) | (binColumns_ != 0 ? kBinColumnsBit : 0)};
    }

    bool ProgramTiming(const Timing& timing) {
      const LONG writes[][2] = {{kWindowLeft, timing.left},
                                {kWindowTop, timing.top},
                                {kWindowColumns, timing.columns},
                                {kWindowLines, timing.lines},
                                {kBinning, timing.binning}};
      programmed_ = {.lines = 0};  // unknown until all are written
      for (const auto& [address, value] : writes) {
        if (FAILED(SetRegister(address, value))) return false;
      }
      programmed_ = timing;
      return true;
    }

    CZELModel78& camera_;
    LONG binLines_ = 0;
    LONG binColumns_ = 0;
    Readout readout_;
    LONG timingDirty_ = 0;
    Timing programmed_;
  };

  LONG PrepareCapture() override;
  void OnFrameHook(unsigned char* raw) override;

 protected:
  CProperty property_{*this};

 private:
  LONG Variant() const { return (altPathA_ != 0 ? kAltPathABit : 0) | (altPathB_ != 0 ? kAltPathBBit : 0); }
  bool ProgramVariant(LONG variant);
  void LayOutFields();

  LONG altPathA_ = 0;  ///< field by field
  LONG altPathB_ = 0;  ///< the odd field first
  LONG pathPending_ = 0;
  LONG programmedVariant_ = 0;

  // Of the capture being run.
  FieldLayout fields_;  ///< no lines: nothing to weave
  bool oddFirst_ = false;
  std::vector<unsigned char> fieldBuffer_;
};

bool CZELModel78::ProgramVariant(LONG variant) {
  const LONG writes[][2] = {{kVariantAccess, 0},
                            {kVariantProgressive, (variant & kAltPathABit) == 0},
                            {kVariantOddFirst, (variant & kAltPathBBit) != 0},
                            {kVariantAccess, 1}};
  for (const auto& [address, value] : writes) {
    if (FAILED(property_.SetRegister(address, value))) return false;
  }
  programmedVariant_ = variant;
  return true;
}

void CZELModel78::LayOutFields() {
  oddFirst_ = altPathB_ != 0;
  const LONG firstLines = oddFirst_ ? geometry_.height / 2 : (geometry_.height + 1) / 2;
  fields_.lines = geometry_.height;
  fields_.width = static_cast<std::size_t>(geometry_.width);
  fields_.secondField = fields_.width * static_cast<std::size_t>(firstLines);
  fieldBuffer_.resize(fields_.width * static_cast<std::size_t>(fields_.lines));
}

LONG CZELModel78::PrepareCapture() {
  fields_ = {};
  ForgetPreparation();
  property_.UpdateReadout();
  if (!property_.UpdateTiming()) return 0;
  if (pathPending_ != 0) {
    if (!ProgramVariant(Variant())) return 0;
    pathPending_ = 0;
  }
  property_.SetBayerMode(property_.UpdateDerivedSizes());
  if (CZELDeviceImplUSB3::PrepareCapture() == 0) return 0;
  if (altPathA_ != 0 && property_.HasTwoFields()) LayOutFields();
  return 1;
}

void CZELModel78::OnFrameHook(unsigned char* raw) {
  if (fields_.lines == 0) return;
  const auto weave = oddFirst_ ? WeaveFields<1> : WeaveFields<0>;
  weave(raw, fieldBuffer_.data(), fields_);
}

CZELDevice* CreateModel78() {
  return NewDevice<CZELModel78>();
}

}  // namespace zel
