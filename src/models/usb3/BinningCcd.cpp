#include "models/usb3/BinningCcd.h"

#include <algorithm>

#include "property/OutParameter.h"

namespace zel {
namespace {

constexpr LONG kShortestShutter = 1;
constexpr LONG kRegisterMask = 0xFFFF;

// Registers of the analogue front end.
constexpr LONG kGain = Documented(0x05);
constexpr LONG kGainAccess = Documented(0x3003);  // 1: the front end takes its next value

// Registers of the timing generator.
constexpr LONG kShutterLines = Documented(0x2004);
constexpr LONG kWindowLeft = Chosen(0x2010);  // the window in sensor pixels
constexpr LONG kWindowTop = Chosen(0x2012);
constexpr LONG kWindowColumns = Chosen(0x2014);
constexpr LONG kWindowLines = Chosen(0x2016);
constexpr LONG kBinning = Chosen(0x2018);
constexpr LONG kVariantAccess = Documented(0x3000);  // 0: the readout variant may be changed, 1: it is in use
constexpr LONG kVariantProgressive = Documented(0x3001);  // 1: lines in order, 0: field by field
constexpr LONG kVariantOddFirst = Documented(0x3002);     // the field of the odd lines comes first

constexpr LONG kBinLinesBit = Chosen(1);  // of kBinning
constexpr LONG kBinColumnsBit = Chosen(2);

// Bits of the value that selects the readout variant.
constexpr LONG kAltPathABit = 1;
constexpr LONG kAltPathBBit = 2;

struct RegisterWrite {
  LONG address;
  LONG value;
};

}  // namespace

BinningCcd::CProperty::CProperty(BinningCcd& camera, const BinningCcdSheet& sheet)
    : ModelProperty(sheet.type),
      camera_(camera),
      sensorWidth_(ModelOf(sheet.type).full.width),
      sensorLines_(ModelOf(sheet.type).full.height),
      frameLines_(sheet.frameLines),
      readout_{sensorWidth_, sensorLines_ / 2, sensorWidth_, sensorLines_},
      programmed_(Whole()) {}

// ---- settings

HRESULT BinningCcd::CProperty::SetShutter(LONG lines) {
  return Adjust(kShutter, lines, kRegisterMask,
                [this](LONG value) { return SetRegister(kShutterLines, value); });
}

HRESULT BinningCcd::CProperty::SetDigitalGlobalGain(LONG gain) {
  return Adjust(kDigitalGlobalGain, gain, kRegisterMask, [this](LONG value) {
    const HRESULT result = SetRegister(kGainAccess, 1);
    return FAILED(result) ? result : SetRegister(kGain, value);
  });
}

HRESULT BinningCcd::CProperty::GetROI(LONG* x, LONG* y, LONG* width, LONG* height) {
  Put(x, Record(kRoiLeft).current);
  Put(y, Record(kRoiTop).current);
  Put(width, Record(kRoiWidth).current * readout_.outWidth / readout_.sensorWidth);
  Put(height, Record(kRoiHeight).current * readout_.sensorLines / sensorLines_);
  return S_OK;
}

HRESULT BinningCcd::CProperty::SetModelValue1(LONG variant) {
  if (variant < 0 || variant > (kAltPathABit | kAltPathBBit)) return E_INVALIDARG;
  camera_.altPathA_ = (variant & kAltPathABit) != 0;
  camera_.altPathB_ = (variant & kAltPathBBit) != 0;
  camera_.pathPending_ = 1;
  return S_OK;
}

HRESULT BinningCcd::CProperty::GetModelValue1(LONG* variant) {
  Put(variant, camera_.Variant());
  return S_OK;
}

HRESULT BinningCcd::CProperty::GetModelValue4(LONG* on) {
  Put(on, binLines_);
  return S_OK;
}

HRESULT BinningCcd::CProperty::GetModelValue5(LONG* on) {
  Put(on, binColumns_);
  return S_OK;
}

HRESULT BinningCcd::CProperty::SetBinning(LONG* flag, LONG on) {
  *flag = on;
  UpdateReadout();
  timingDirty_ = 1;
  return S_OK;
}

// ---- the camera's timing

/// What the camera does not take now, the next capture preparation tells it again.
LONG BinningCcd::CProperty::InitializeCamera() {
  ProgramTiming(Whole());
  camera_.pathPending_ = !camera_.ProgramVariant(0) || camera_.Variant() != 0;
  return 1;
}

void BinningCcd::CProperty::UpdateReadout() {
  const LONG fieldLines = sensorLines_ / 2;
  readout_ = {.outWidth = binColumns_ != 0 ? sensorWidth_ / 2 : sensorWidth_,
              .outLines = fieldLines,
              .sensorWidth = sensorWidth_,
              .sensorLines = binLines_ != 0 ? fieldLines : sensorLines_};
  if (frameLines_ != 0) FitShutter();
}

void BinningCcd::CProperty::FitShutter() {
  PropertyRecord& shutter = Edit(kShutter);
  const double place = static_cast<double>(Clamped(kShutter, shutter.current)) /
                       std::max<LONG>(shutter.maximum - shutter.minimum, 1);
  shutter.minimum = kShortestShutter;
  shutter.maximum = binLines_ != 0 ? (frameLines_ + 1) / 2 : frameLines_;
  const LONG lines = static_cast<LONG>(place * (shutter.maximum - shutter.minimum) + 0.5) + shutter.minimum;
  // Without a camera the next capture preparation brings the value there.
  if (FAILED(SetShutter(lines))) shutter.current = Clamped(kShutter, lines);
}

bool BinningCcd::CProperty::UpdateTiming() {
  const Timing wanted = Wanted();
  if (timingDirty_ == 0 && wanted == Whole() && programmed_ == wanted) return true;
  if (!ProgramTiming(wanted)) return false;
  timingDirty_ = 0;
  return true;
}

BinningCcd::CProperty::Timing BinningCcd::CProperty::Whole() const {
  return {.columns = sensorWidth_, .lines = sensorLines_};
}

BinningCcd::CProperty::Timing BinningCcd::CProperty::Wanted() const {
  return {.left = Record(kRoiLeft).current,
          .top = Record(kRoiTop).current,
          .columns = Record(kRoiWidth).current,
          .lines = Record(kRoiHeight).current,
          .binning = (binLines_ != 0 ? kBinLinesBit : 0) | (binColumns_ != 0 ? kBinColumnsBit : 0)};
}

bool BinningCcd::CProperty::ProgramTiming(const Timing& timing) {
  const RegisterWrite writes[] = {{kWindowLeft, timing.left},
                                  {kWindowTop, timing.top},
                                  {kWindowColumns, timing.columns},
                                  {kWindowLines, timing.lines},
                                  {kBinning, timing.binning}};
  programmed_ = {};  // unknown until all are written
  for (const auto& [address, value] : writes) {
    if (FAILED(SetRegister(address, value))) return false;
  }
  programmed_ = timing;
  return true;
}

// ---- capture

LONG BinningCcd::Variant() const {
  return (altPathA_ != 0 ? kAltPathABit : 0) | (altPathB_ != 0 ? kAltPathBBit : 0);
}

bool BinningCcd::ProgramVariant(LONG variant) {
  const RegisterWrite writes[] = {{kVariantAccess, 0},
                                  {kVariantProgressive, (variant & kAltPathABit) == 0},
                                  {kVariantOddFirst, (variant & kAltPathBBit) != 0},
                                  {kVariantAccess, 1}};
  for (const auto& [address, value] : writes) {
    if (FAILED(property_.SetRegister(address, value))) return false;
  }
  return true;
}

LONG BinningCcd::PrepareCapture() {
  weaver_.Forget();
  ForgetPreparation();
  property_.UpdateReadout();
  if (!property_.UpdateTiming()) return 0;
  if (pathPending_ != 0) {
    if (!ProgramVariant(Variant())) return 0;
    pathPending_ = 0;
  }
  property_.SetBayerMode(property_.UpdateDerivedSizes());
  if (CZELDeviceImplUSB3::PrepareCapture() == 0) return 0;
  if (altPathA_ != 0 && property_.HasTwoFields()) {
    using enum FieldWeaver::FirstField;
    weaver_.LayOut(static_cast<std::size_t>(geometry_.width), geometry_.height, altPathB_ != 0 ? Odd : Even);
  }
  return 1;
}

}  // namespace zel
