#include "property/CZELDevicePropertyImpl.h"

#include "imaging/COrvaneImageImpl.h"
#include "property/OutParameter.h"

namespace zel {
namespace {

struct RecordDefaults {
  LONG first, last;  ///< ids
  LONG minimum, maximum, value;
  LONG supported;
};

/// Ids that are missing here start with a range of 0..0 and unsupported. Models replace the window's ranges
/// by those of their sensor.
constexpr RecordDefaults kDefaults[] = {
    {kRoiLeft, kRoiTop, 0, 0, 0, 1},
    {kRoiWidth, kRoiHeight, 3, 0, 0, 1},
    {kSubSampleX, kSubSampleY, 0, 12, 0, 0},
    {kAnalogGlobalGain, kAnalogGlobalGain, 0, 65535, 800, 0},
    {kDigitalGlobalGain, kDigitalGlobalGain, 0, 65535, 800, 1},
    {kShutter, kShutter, 0, 1800, 300, 1},
    {kColorGainRed, kColorGainBlue, 0, 300, 128, 1},
    {kColorOffset, kColorOffset + 3, 0, 255, 128, 0},
    {kChannelValueSet2, kChannelValueSet2 + 3, 0, 400, 128, 0},
    {kAuxValue1, kAuxValue2, 0, 1, 1, 1},
    {kSaturation, kSaturation, -10, 10, 0, 1},
    {kBrightness, kBrightness, -255, 255, 0, 1},
    {kContrast, kContrast, -127, 127, 0, 1},
    {kHue, kHue, 0, 359, 0, 1},
    {kGamma, kGamma, 0, 200, 0, 1},
    {kColorCorrection, kColorCorrection, 0, 1, 1, 1},
    {kAuxValue3, kAuxValue4, 0, 1, 0, 0},
    {kDotFilterThreshold, kDotFilterThreshold, 1, 255, 15, 1},
    {kDotFilterEnabled, kDotFilterEnabled, 0, 1, 0, 1},
    {kSharpness, kSharpness, 0, 256, 0, 1},
};

}  // namespace

CZELDevicePropertyImpl::CZELDevicePropertyImpl()
    : colorMatrix_{{{1.36f, -0.25f, -0.1f, 0.0f},
                    {-0.22f, 1.4f, -0.32f, 0.0f},
                    {-0.14f, -0.15f, 1.42f, 0.0f},
                    {0.0f, 0.0f, 0.0f, 1.0f}}},
      autoFocus_(*this) {
  for (const RecordDefaults& row : kDefaults) {
    for (LONG id = row.first; id <= row.last; ++id) {
      Edit(id) = {row.minimum, row.maximum, row.value, row.value, row.supported, 0};
    }
  }
}

// The autofocus worker writes through this object, which is its focus drive.
CZELDevicePropertyImpl::~CZELDevicePropertyImpl() {
  autoFocus_.StopAutoFocus();
}

HRESULT CZELDevicePropertyImpl::AttachDevice(CZELDevice* device) {
  device_ = device;
  return S_OK;
}

HRESULT CZELDevicePropertyImpl::DetachDevice() {
  device_ = nullptr;
  return S_OK;
}

std::shared_ptr<COrvaneImageImpl> CZELDevicePropertyImpl::RunningImage() const {
  return device_ != nullptr && capture_ != nullptr ? capture_->HoldImage() : nullptr;
}

LONG CZELDevicePropertyImpl::OnCaptureStopped() {
  return 0;
}

void CZELDevicePropertyImpl::AbortTransfer() {}

LONG CZELDevicePropertyImpl::InitializeCamera() {
  return 1;
}

// ---- patterns

HRESULT CZELDevicePropertyImpl::SupportOf(LONG id) const {
  return IsPropertyId(id) && Record(id).supported != 0 ? S_OK : E_NOTIMPL;
}

HRESULT CZELDevicePropertyImpl::SetInRange(LONG id, LONG value) {
  if (!IsPropertyId(id)) return E_NOTIMPL;
  PropertyRecord& record = Edit(id);
  if (value < record.minimum || value > record.maximum) return E_INVALIDARG;
  record.current = value;
  return S_OK;
}

HRESULT CZELDevicePropertyImpl::SetRanged(LONG id, LONG value) {
  return SupportOf(id) == S_OK ? SetInRange(id, value) : E_NOTIMPL;
}

HRESULT CZELDevicePropertyImpl::SetThenSupported(LONG id, LONG value) {
  const HRESULT result = SetInRange(id, value);
  return result == S_OK ? SupportOf(id) : result;
}

HRESULT CZELDevicePropertyImpl::SetFlag(LONG id, LONG value) {
  const HRESULT result = SupportOf(id);
  if (result == S_OK) Edit(id).current = value;
  return result;
}

HRESULT CZELDevicePropertyImpl::GetCurrent(LONG id, LONG* value) const {
  if (IsPropertyId(id)) Put(value, Record(id).current);
  return SupportOf(id);
}

HRESULT CZELDevicePropertyImpl::GetRange(LONG id, LONG* minimum, LONG* maximum) const {
  if (IsPropertyId(id)) {
    Put(minimum, Record(id).minimum);
    Put(maximum, Record(id).maximum);
  }
  return SupportOf(id);
}

HRESULT CZELDevicePropertyImpl::GetDefault(LONG id, LONG* value) const {
  if (IsPropertyId(id)) Put(value, Record(id).defaultValue);
  return SupportOf(id);
}

// ---- properties by number

HRESULT CZELDevicePropertyImpl::IsPropertySupported(LONG id) {
  return SupportOf(id);
}

HRESULT CZELDevicePropertyImpl::SetProperty(LONG id, LONG value) {
  return SetRanged(id, value);
}

HRESULT CZELDevicePropertyImpl::GetPropertyInfo(LONG id, PropertyRecord* record) {
  if (!IsPropertyId(id)) return E_NOTIMPL;
  if (record == nullptr) return E_INVALIDARG;
  *record = Record(id);
  return SupportOf(id);
}

// ---- the two values and two lists of four that only single camera types give a meaning

HRESULT CZELDevicePropertyImpl::SetPositiveValue(LONG value) {
  if (value >= 1) settings_.positiveValue = value;
  return S_OK;
}

HRESULT CZELDevicePropertyImpl::GetPositiveValue(LONG* value) {
  Put(value, settings_.positiveValue);
  return S_OK;
}

HRESULT CZELDevicePropertyImpl::SetPairValue(LONG value, LONG selector) {
  settings_.pairValue[selector != 0 ? 0 : 1] = value;
  return S_OK;
}

HRESULT CZELDevicePropertyImpl::GetPairValue(LONG* value, LONG selector) {
  Put(value, settings_.pairValue[selector != 0 ? 0 : 1]);
  return S_OK;
}

HRESULT CZELDevicePropertyImpl::SetRawLayout(LONG a, LONG b, LONG c, LONG d) {
  settings_.rawLayout = {a, b, c, d};
  return S_OK;
}

}  // namespace zel
