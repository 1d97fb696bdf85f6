#include "device/PlaySettings.h"

#include "imaging/COrvaneImageImpl24.h"
#include "imaging/COrvaneImageImpl32.h"
#include "property/CZELDevicePropertyImpl.h"

namespace zel {
namespace {

/// A setting as the camera type reports it, or `fallback` when it writes none.
LONG Setting(CZELDeviceProperty& store, HRESULT (CZELDeviceProperty::*getter)(LONG*), LONG fallback = 0) {
  LONG value = fallback;
  (store.*getter)(&value);
  return value;
}

LONG GainSetting(CZELDeviceProperty& store, LONG id) {
  LONG value = 128;
  store.GetColorGain(id, &value);
  return value;
}

}  // namespace

std::unique_ptr<COrvaneImageImpl> MakePlayImage(CZELDevicePropertyImpl& store, bool eightBitTransfer,
                                                bool keepRaw, CZELCritSec& lock) {
  using Property = CZELDeviceProperty;
  constexpr LONG k24Bit = 4;
  const LONG format = Setting(store, &Property::GetOutputFormat, 5);
  std::unique_ptr<COrvaneImageImpl> image;
  if (format == k24Bit) {
    image = std::make_unique<COrvaneImageImpl24>(1);
  } else {
    image = std::make_unique<COrvaneImageImpl32>(1);
  }
  image->SetOutputFormat(format);
  image->SetInputFormat(store.Settings().inputFormat);
  image->SetLock(&lock);

  image->SetBayerMode(Setting(store, &Property::GetBayerMode));
  image->SetColorful(Setting(store, &Property::GetColorful, 1) != 0);
  image->SetColorGainR(GainSetting(store, kColorGainRed));
  image->SetColorGainG(GainSetting(store, kColorGainGreen));
  image->SetColorGainB(GainSetting(store, kColorGainBlue));
  image->SetAutoWhiteBalance(Setting(store, &Property::GetAutoWhiteBalance));
  image->SetSaturation(Setting(store, &Property::GetSaturation));
  image->SetContrast(Setting(store, &Property::GetContrast));
  image->SetBrightness(Setting(store, &Property::GetBrightness));
  image->SetHue(Setting(store, &Property::GetHue));
  image->Set8BitTransfer(eightBitTransfer);
  image->SetBayerDecodingMethod(Setting(store, &Property::GetBayerDecodingMethod));
  image->SetKeepRaw(keepRaw);
  image->SetColorCorrection(Setting(store, &Property::GetColorCorrection, 1));
  image->SetTwoTap(store.Settings().twoTap);
  image->SetDotFilterThreshold(Setting(store, &Property::GetDotFilterThreshold, 15));
  image->SetDotFilterEnabled(Setting(store, &Property::GetDotFilterEnabled));
  image->SetSharpness(Setting(store, &Property::GetSharpness));
  // Settings made before `Play` act like those made during it.
  image->SetGamma(Setting(store, &Property::GetGamma));
  store.ApplyWhitePixelCanceling(*image);
  return image;
}

void FitAutoFocus(CAutoFocus& autoFocus, COrvaneImageImpl& image) {
  const LONG format = image.GetOutputFormat();
  const bool is32Bit = (format == 1 || format == 5) && image.GetBuffer() != nullptr;
  autoFocus.Initialize(is32Bit ? image.GetWidth() : 0, is32Bit ? image.GetHeight() : 0);
}

}  // namespace zel
