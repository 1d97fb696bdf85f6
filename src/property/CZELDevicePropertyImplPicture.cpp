// The store's settings that the image object works with; each reaches the running capture at once, but the
// output format counts from the next one on.

#include <algorithm>

#include "imaging/COrvaneImageImpl.h"
#include "property/CZELDevicePropertyImpl.h"
#include "property/OutParameter.h"

namespace zel {
namespace {

constexpr bool IsMatrixIndex(LONG index) {
  return index >= 0 && index < 4;
}

}  // namespace

// ---- transfer and decoding

HRESULT CZELDevicePropertyImpl::SetTransMode(LONG mode) {
  if (mode != 0 && mode != 1) return E_INVALIDARG;
  settings_.transferMode = mode;
  return S_OK;
}

HRESULT CZELDevicePropertyImpl::GetTransMode(LONG* mode) {
  Put(mode, settings_.transferMode);
  return S_OK;
}

HRESULT CZELDevicePropertyImpl::SetTransBits(LONG bits) {
  settings_.transferBits = bits;
  return S_OK;
}

HRESULT CZELDevicePropertyImpl::GetTransBits(LONG* bits) {
  Put(bits, settings_.transferBits);
  return S_OK;
}

HRESULT CZELDevicePropertyImpl::SetTimeout(LONG milliseconds) {
  settings_.timeoutMs = milliseconds;
  return S_OK;
}

HRESULT CZELDevicePropertyImpl::GetTimeout(LONG* milliseconds) {
  Put(milliseconds, settings_.timeoutMs);
  return S_OK;
}

HRESULT CZELDevicePropertyImpl::SetOutputFormat(LONG format) {
  settings_.outputFormat = format;
  Push(&COrvaneImageImpl::SetOutputFormat, format);
  return S_OK;
}

HRESULT CZELDevicePropertyImpl::GetOutputFormat(LONG* format) {
  Put(format, settings_.outputFormat);
  return S_OK;
}

HRESULT CZELDevicePropertyImpl::SetBayerDecodingMethod(LONG method) {
  if (method < 0) method = 0;
  if (method >= 3) method = 1;
  settings_.bayerDecodingMethod = method;
  Push(&COrvaneImageImpl::SetBayerDecodingMethod, method);
  return S_OK;
}

HRESULT CZELDevicePropertyImpl::GetBayerDecodingMethod(LONG* method) {
  Put(method, settings_.bayerDecodingMethod);
  return S_OK;
}

HRESULT CZELDevicePropertyImpl::SetBayerMode(LONG mode) {
  if (mode < 0 || mode > 3) return E_INVALIDARG;
  settings_.bayerMode = mode;
  Push(&COrvaneImageImpl::SetBayerMode, mode);
  return S_OK;
}

HRESULT CZELDevicePropertyImpl::GetBayerMode(LONG* mode) {
  Put(mode, settings_.bayerMode);
  return S_OK;
}

// ---- colour

HRESULT CZELDevicePropertyImpl::SetColorful(LONG on) {
  settings_.colorful = on != 0 ? 1 : 0;
  Push(&COrvaneImageImpl::SetColorful, static_cast<unsigned char>(settings_.colorful));
  return S_OK;
}

HRESULT CZELDevicePropertyImpl::GetColorful(LONG* on) {
  Put(on, settings_.colorful);
  return S_OK;
}

HRESULT CZELDevicePropertyImpl::SetAutoWhiteBalance(LONG mode) {
  settings_.autoWhiteBalance = mode;
  Push(&COrvaneImageImpl::SetAutoWhiteBalance, mode);
  return S_OK;
}

HRESULT CZELDevicePropertyImpl::GetAutoWhiteBalance(LONG* mode) {
  Put(mode, settings_.autoWhiteBalance);
  return S_OK;
}

HRESULT CZELDevicePropertyImpl::SetSaturation(LONG value) {
  return SetInRangeAndPush(kSaturation, value, &COrvaneImageImpl::SetSaturation);
}

HRESULT CZELDevicePropertyImpl::GetSaturation(LONG* value) {
  return GetCurrent(kSaturation, value);
}

HRESULT CZELDevicePropertyImpl::SetBrightness(LONG value) {
  return SetInRangeAndPush(kBrightness, value, &COrvaneImageImpl::SetBrightness);
}

HRESULT CZELDevicePropertyImpl::GetBrightness(LONG* value) {
  return GetCurrent(kBrightness, value);
}

HRESULT CZELDevicePropertyImpl::SetContrast(LONG value) {
  return SetInRangeAndPush(kContrast, value, &COrvaneImageImpl::SetContrast);
}

HRESULT CZELDevicePropertyImpl::GetContrast(LONG* value) {
  return GetCurrent(kContrast, value);
}

HRESULT CZELDevicePropertyImpl::SetHue(LONG value) {
  return SetInRangeAndPush(kHue, value, &COrvaneImageImpl::SetHue);
}

HRESULT CZELDevicePropertyImpl::GetHue(LONG* value) {
  return GetCurrent(kHue, value);
}

HRESULT CZELDevicePropertyImpl::SetGamma(LONG value) {
  if (SupportOf(kGamma) != S_OK) return E_NOTIMPL;
  return SetInRangeAndPush(kGamma, value, &COrvaneImageImpl::SetGamma);
}

HRESULT CZELDevicePropertyImpl::GetGamma(LONG* value) {
  return GetCurrent(kGamma, value);
}

HRESULT CZELDevicePropertyImpl::SetColorCorrection(LONG on) {
  return SetInRangeAndPush(kColorCorrection, on, &COrvaneImageImpl::SetColorCorrection);
}

HRESULT CZELDevicePropertyImpl::GetColorCorrection(LONG* on) {
  return GetCurrent(kColorCorrection, on);
}

// ---- colour matrix

HRESULT CZELDevicePropertyImpl::SetColorMatrixElement(LONG column, LONG row, float value) {
  if (!IsMatrixIndex(column) || !IsMatrixIndex(row)) return S_OK;
  colorMatrix_[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)] = value;
  Push(&COrvaneImageImpl::SetColorMatrixElement, row, column, value);
  return S_OK;
}

HRESULT CZELDevicePropertyImpl::GetColorMatrixElement(LONG column, LONG row, float* value) {
  if (!IsMatrixIndex(column) || !IsMatrixIndex(row)) return E_INVALIDARG;
  Put(value, colorMatrix_[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)]);
  return S_OK;
}

HRESULT CZELDevicePropertyImpl::ApplyColorMatrix() {
  if (device_ == nullptr) return E_HANDLE;
  if (const auto image = RunningImage()) {
    for (LONG row = 0; row < 4; ++row) {
      for (LONG column = 0; column < 4; ++column) {
        image->SetColorMatrixElement(
            row, column, colorMatrix_[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)]);
      }
    }
    image->SetColorCorrection(Record(kColorCorrection).current);
  }
  return SetBayerMode(UpdateDerivedSizes());
}

// ---- defects and sharpness

HRESULT CZELDevicePropertyImpl::SetWhitePixelCanceling(LONG value) {
  const HRESULT result = SetRanged(kWhitePixelCanceling, value);
  if (result != S_OK) return result;
  if (const auto image = RunningImage()) ApplyWhitePixelCanceling(*image);
  return S_OK;
}

void CZELDevicePropertyImpl::ApplyWhitePixelCanceling(COrvaneImageImpl& image) const {
  const PropertyRecord& record = Record(kWhitePixelCanceling);
  if (record.supported == 0) return;
  // A camera type with a finer scale than on and off gives the threshold; 255 is the image object's own.
  const LONG threshold = record.current > 1 ? std::min<LONG>(record.current, 255) : 255;
  image.SetWhitePixelCanceling(record.current != 0, static_cast<unsigned char>(threshold));
}

HRESULT CZELDevicePropertyImpl::GetWhitePixelCanceling(LONG* value) {
  return GetCurrent(kWhitePixelCanceling, value);
}

HRESULT CZELDevicePropertyImpl::SetDotFilterThreshold(LONG threshold) {
  Edit(kDotFilterThreshold).current = threshold;
  Push(&COrvaneImageImpl::SetDotFilterThreshold, threshold);
  return S_OK;
}

HRESULT CZELDevicePropertyImpl::GetDotFilterThreshold(LONG* threshold) {
  return GetCurrent(kDotFilterThreshold, threshold);
}

HRESULT CZELDevicePropertyImpl::SetDotFilterEnabled(LONG on) {
  Edit(kDotFilterEnabled).current = on;
  Push(&COrvaneImageImpl::SetDotFilterEnabled, on);
  return S_OK;
}

HRESULT CZELDevicePropertyImpl::GetDotFilterEnabled(LONG* on) {
  return GetCurrent(kDotFilterEnabled, on);
}

HRESULT CZELDevicePropertyImpl::SetSharpness(LONG value) {
  return SetInRangeAndPush(kSharpness, value, &COrvaneImageImpl::SetSharpness);
}

HRESULT CZELDevicePropertyImpl::GetSharpness(LONG* value) {
  return GetCurrent(kSharpness, value);
}

}  // namespace zel
