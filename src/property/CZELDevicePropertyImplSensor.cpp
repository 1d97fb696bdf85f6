// The store's settings that belong to the sensor: window, mirrors, sub-sampling, trigger, gains, exposure.

#include <cstdint>

#include "common/ResultCodes.h"
#include "device/CZELDevice.h"
#include "imaging/COrvaneImageImpl.h"
#include "property/CZELDevicePropertyImpl.h"
#include "property/OutParameter.h"

namespace zel {

// ---- window

HRESULT CZELDevicePropertyImpl::GetFullROI(LONG* x, LONG* y, LONG* width, LONG* height) {
  Put(x, Record(kRoiLeft).minimum);
  Put(y, Record(kRoiTop).minimum);
  Put(width, Record(kRoiWidth).maximum);
  Put(height, Record(kRoiHeight).maximum);
  return S_OK;
}

HRESULT CZELDevicePropertyImpl::SetROI(LONG x, LONG y, LONG width, LONG height) {
  const LONG values[] = {x, y, width, height};
  for (LONG id = kRoiLeft; id <= kRoiHeight; ++id) {
    if (values[id] < Record(id).minimum || values[id] > Record(id).maximum) return E_INVALIDARG;
  }
  if (std::int64_t{x} + width > Record(kRoiWidth).maximum) return E_INVALIDARG;
  if (std::int64_t{y} + height > Record(kRoiHeight).maximum) return E_INVALIDARG;
  for (LONG id = kRoiLeft; id <= kRoiHeight; ++id) Edit(id).current = values[id];
  return S_OK;
}

HRESULT CZELDevicePropertyImpl::GetROI(LONG* x, LONG* y, LONG* width, LONG* height) {
  const auto divisor = [this](LONG id) {
    const PropertyRecord& record = Record(id);
    return record.supported != 0 && record.current > 0 ? record.current + 1 : 1;
  };
  Put(x, Record(kRoiLeft).current);
  Put(y, Record(kRoiTop).current);
  Put(width, Record(kRoiWidth).current / divisor(kSubSampleX));
  Put(height, Record(kRoiHeight).current / divisor(kSubSampleY));
  return S_OK;
}

HRESULT CZELDevicePropertyImpl::SetLargeFrameOption(LONG option) {
  if (Record(kRoiWidth).maximum < 640 || Record(kRoiHeight).maximum < 480) return E_NOTIMPL;
  settings_.largeFrameOption = option;
  return S_OK;
}

HRESULT CZELDevicePropertyImpl::GetLargeFrameOption(LONG* option) {
  Put(option, settings_.largeFrameOption);
  return S_OK;
}

HRESULT CZELDevicePropertyImpl::SetSubSample(LONG id, LONG code) {
  if (device_ != nullptr) {
    const LONG state = device_->GetStatus();
    if (state == kStatePlaying || state == kStatePaused || state == kStateClosed) return kResultCapturing;
  }
  PropertyRecord& record = Edit(id);
  if (code < record.minimum || code > record.maximum) return E_INVALIDARG;
  record.current = record.supported != 0 ? code : 0;
  return SupportOf(id);
}

HRESULT CZELDevicePropertyImpl::SetSubSampleX(LONG code) {
  return SetSubSample(kSubSampleX, code);
}
HRESULT CZELDevicePropertyImpl::GetSubSampleX(LONG* code) {
  return GetCurrent(kSubSampleX, code);
}
HRESULT CZELDevicePropertyImpl::SetSubSampleY(LONG code) {
  return SetSubSample(kSubSampleY, code);
}
HRESULT CZELDevicePropertyImpl::GetSubSampleY(LONG* code) {
  return GetCurrent(kSubSampleY, code);
}

// ---- mirrors and mosaic phase

HRESULT CZELDevicePropertyImpl::SetMirror(LONG id, LONG on) {
  if (SupportOf(id) != S_OK) return E_NOTIMPL;
  if (Record(id).current == on) return S_OK;
  Edit(id).current = on;
  return SetBayerMode(UpdateDerivedSizes());
}

HRESULT CZELDevicePropertyImpl::SetHorMirror(LONG on) {
  return SetMirror(kHorMirror, on);
}
HRESULT CZELDevicePropertyImpl::GetHorMirror(LONG* on) {
  return GetCurrent(kHorMirror, on);
}
HRESULT CZELDevicePropertyImpl::SetVerMirror(LONG on) {
  return SetMirror(kVerMirror, on);
}
HRESULT CZELDevicePropertyImpl::GetVerMirror(LONG* on) {
  return GetCurrent(kVerMirror, on);
}

LONG CZELDevicePropertyImpl::UpdateDerivedSizes() {
  // 0 -> 1, 1 -> 0, 2 -> 2, 3 -> 1: what the cameras' phase numbering needs, not a plain exchange of rows.
  const auto nextRow = [](LONG phase) { return (phase + 1) % 2 + phase / 2; };
  LONG phase = settings_.baseBayerPhase;
  if (Record(kRoiTop).current % 2 != 0) phase = nextRow(phase);
  if (Record(kVerMirror).current != 0 && Record(kRoiHeight).current % 2 == 0) phase = nextRow(phase);
  if (Record(kHorMirror).current != 0 && Record(kRoiWidth).current % 2 == 0) phase = (phase + 2) % 4;
  return phase;
}

// ---- trigger, clock, strobe

HRESULT CZELDevicePropertyImpl::SetExtTrigger(LONG on) {
  const HRESULT result = SetFlag(kExtTrigger, on);
  // Frames taken under the other trigger setting are not what the application waits for.
  if (result == S_OK && device_ != nullptr && capture_ != nullptr) capture_->ClearFrameQueue();
  return result;
}

HRESULT CZELDevicePropertyImpl::GetExtTrigger(LONG* on) {
  return GetCurrent(kExtTrigger, on);
}
HRESULT CZELDevicePropertyImpl::SetHalfClock(LONG value) {
  return SetFlag(kHalfClock, value);
}
HRESULT CZELDevicePropertyImpl::GetHalfClock(LONG* value) {
  return GetCurrent(kHalfClock, value);
}
HRESULT CZELDevicePropertyImpl::SetStrobe(LONG on) {
  return SetFlag(kStrobe, on);
}
HRESULT CZELDevicePropertyImpl::GetStrobe(LONG* on) {
  return GetCurrent(kStrobe, on);
}

// ---- gains and offsets

HRESULT CZELDevicePropertyImpl::SetColorGain(LONG id, LONG value) {
  const HRESULT result = SetInRange(id, value);
  if (result != S_OK) return result;
  if (id == kColorGainRed) Push(&COrvaneImageImpl::SetColorGainR, value);
  if (id == kColorGainGreen) Push(&COrvaneImageImpl::SetColorGainG, value);
  if (id == kColorGainBlue) Push(&COrvaneImageImpl::SetColorGainB, value);
  return S_OK;
}

HRESULT CZELDevicePropertyImpl::GetColorGain(LONG id, LONG* value) {
  if (!IsPropertyId(id)) return E_NOTIMPL;
  // Automatic white balance moves the gains of the running image.
  if (const auto image = RunningImage()) {
    if (id == kColorGainRed) Edit(id).current = image->GetColorGainR();
    if (id == kColorGainGreen) Edit(id).current = image->GetColorGainG();
    if (id == kColorGainBlue) Edit(id).current = image->GetColorGainB();
  }
  Put(value, Record(id).current);
  return S_OK;
}

HRESULT CZELDevicePropertyImpl::GetColorGainRange(LONG id, LONG* minimum, LONG* maximum) {
  return GetRange(id, minimum, maximum);
}

HRESULT CZELDevicePropertyImpl::GetColorGainDefault(LONG id, LONG* value) {
  return GetDefault(id, value);
}

HRESULT CZELDevicePropertyImpl::SetAnalogGlobalGain(LONG value) {
  return SetRanged(kAnalogGlobalGain, value);
}

HRESULT CZELDevicePropertyImpl::GetAnalogGlobalGain(LONG* value) {
  return GetCurrent(kAnalogGlobalGain, value);
}

HRESULT CZELDevicePropertyImpl::GetAnalogGlobalGainRange(LONG* minimum, LONG* maximum) {
  return GetRange(kAnalogGlobalGain, minimum, maximum);
}

HRESULT CZELDevicePropertyImpl::SetDigitalGlobalGain(LONG value) {
  return SetRanged(kDigitalGlobalGain, value);
}

HRESULT CZELDevicePropertyImpl::GetDigitalGlobalGain(LONG* value) {
  return GetCurrent(kDigitalGlobalGain, value);
}

HRESULT CZELDevicePropertyImpl::GetDigitalGlobalGainRange(LONG* minimum, LONG* maximum) {
  return GetRange(kDigitalGlobalGain, minimum, maximum);
}

HRESULT CZELDevicePropertyImpl::SetColorOffset(LONG id, LONG value) {
  return SetRanged(id, value);
}
HRESULT CZELDevicePropertyImpl::GetColorOffset(LONG id, LONG* value) {
  return GetCurrent(id, value);
}

HRESULT CZELDevicePropertyImpl::GetColorOffsetRange(LONG id, LONG* minimum, LONG* maximum) {
  return GetRange(id, minimum, maximum);
}

HRESULT CZELDevicePropertyImpl::GetColorOffsetDefault(LONG id, LONG* value) {
  return GetDefault(id, value);
}

// ---- exposure, thresholds, switches

HRESULT CZELDevicePropertyImpl::SetShutter(LONG value) {
  return SetRanged(kShutter, value);
}
HRESULT CZELDevicePropertyImpl::GetShutter(LONG* value) {
  return GetCurrent(kShutter, value);
}

HRESULT CZELDevicePropertyImpl::GetShutterRange(LONG* minimum, LONG* maximum) {
  return GetRange(kShutter, minimum, maximum);
}

HRESULT CZELDevicePropertyImpl::GetShutterDefault(LONG* value) {
  return GetDefault(kShutter, value);
}
HRESULT CZELDevicePropertyImpl::SetThresh(LONG value) {
  return SetRanged(kThresh, value);
}
HRESULT CZELDevicePropertyImpl::GetThresh(LONG* value) {
  return GetCurrent(kThresh, value);
}

HRESULT CZELDevicePropertyImpl::GetThreshRange(LONG* minimum, LONG* maximum) {
  return GetRange(kThresh, minimum, maximum);
}

HRESULT CZELDevicePropertyImpl::GetThreshDefault(LONG* value) {
  return GetDefault(kThresh, value);
}
HRESULT CZELDevicePropertyImpl::SetAutoThresh(LONG value) {
  return SetRanged(kAutoThresh, value);
}
HRESULT CZELDevicePropertyImpl::GetAutoThresh(LONG* value) {
  return GetCurrent(kAutoThresh, value);
}
HRESULT CZELDevicePropertyImpl::SetNoGainDep(LONG value) {
  return SetRanged(kNoGainDep, value);
}
HRESULT CZELDevicePropertyImpl::GetNoGainDep(LONG* value) {
  return GetCurrent(kNoGainDep, value);
}
HRESULT CZELDevicePropertyImpl::SetCalCtrl(LONG value) {
  return SetRanged(kCalCtrl, value);
}
HRESULT CZELDevicePropertyImpl::GetCalCtrl(LONG* value) {
  return GetCurrent(kCalCtrl, value);
}
HRESULT CZELDevicePropertyImpl::SetAuxValue1(LONG value) {
  return SetRanged(kAuxValue1, value);
}
HRESULT CZELDevicePropertyImpl::GetAuxValue1(LONG* value) {
  return GetCurrent(kAuxValue1, value);
}
HRESULT CZELDevicePropertyImpl::SetAuxValue2(LONG value) {
  return SetRanged(kAuxValue2, value);
}
HRESULT CZELDevicePropertyImpl::GetAuxValue2(LONG* value) {
  return GetCurrent(kAuxValue2, value);
}
HRESULT CZELDevicePropertyImpl::SetAuxValue3(LONG value) {
  return SetThenSupported(kAuxValue3, value);
}
HRESULT CZELDevicePropertyImpl::GetAuxValue3(LONG* value) {
  return GetCurrent(kAuxValue3, value);
}
HRESULT CZELDevicePropertyImpl::SetAuxValue4(LONG value) {
  return SetThenSupported(kAuxValue4, value);
}
HRESULT CZELDevicePropertyImpl::GetAuxValue4(LONG* value) {
  return GetCurrent(kAuxValue4, value);
}

// ---- corrections that single sensors do themselves

HRESULT CZELDevicePropertyImpl::SetBlackPixelCanceling(LONG value) {
  return SetRanged(kBlackPixelCanceling, value);
}

HRESULT CZELDevicePropertyImpl::GetBlackPixelCanceling(LONG* value) {
  return GetCurrent(kBlackPixelCanceling, value);
}

HRESULT CZELDevicePropertyImpl::SetDenoise(LONG value) {
  return SetRanged(kDenoise, value);
}
HRESULT CZELDevicePropertyImpl::GetDenoise(LONG* value) {
  return GetCurrent(kDenoise, value);
}
HRESULT CZELDevicePropertyImpl::SetEdgeEnhance(LONG value) {
  return SetRanged(kEdgeEnhance, value);
}
HRESULT CZELDevicePropertyImpl::GetEdgeEnhance(LONG* value) {
  return GetCurrent(kEdgeEnhance, value);
}
HRESULT CZELDevicePropertyImpl::SetLensCorrection(LONG value) {
  return SetRanged(kLensCorrection, value);
}
HRESULT CZELDevicePropertyImpl::GetLensCorrection(LONG* value) {
  return GetCurrent(kLensCorrection, value);
}
HRESULT CZELDevicePropertyImpl::SetNightMode(LONG value) {
  return SetRanged(kNightMode, value);
}
HRESULT CZELDevicePropertyImpl::GetNightMode(LONG* value) {
  return GetCurrent(kNightMode, value);
}

HRESULT CZELDevicePropertyImpl::SetProgrammableGamma(LONG id, LONG value) {
  return SetThenSupported(id, value);
}

HRESULT CZELDevicePropertyImpl::GetProgrammableGamma(LONG id, LONG* value) {
  return GetCurrent(id, value);
}

}  // namespace zel
