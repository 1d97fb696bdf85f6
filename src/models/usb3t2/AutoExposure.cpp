#include "models/usb3t2/AutoExposure.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <tuple>

#include "common/BytePacking.h"
#include "property/CZELDeviceProperty.h"

namespace zel {
namespace {

constexpr unsigned kSpareBits = 2;  // of a sample of 10 bits on the 8-bit scale

/// Steps for means that are at least so far from the target.
constexpr struct StepRow {
  LONG distance;
  Exposure step;
} kSteps[] = {{120, {150, 15}}, {100, {100, 10}}, {50, {50, 5}}, {25, {25, 3}}, {10, {8, 2}}, {4, {4, 1}}};

std::uint32_t RowSum(const unsigned char* samples, std::size_t count, int bytesPerSample) {
  std::uint32_t sum = 0;
  if (bytesPerSample == 1) {
    for (std::size_t n = 0; n < count; ++n) sum += samples[n];
  } else {
    for (std::size_t n = 0; n < count; ++n)
      sum += static_cast<std::uint32_t>(FromBytes16(samples[2 * n], samples[2 * n + 1])) >> kSpareBits;
  }
  return sum;
}

}  // namespace

LONG CentreMean(const RawPicture& picture) {
  const auto columns = static_cast<std::size_t>(picture.width / 3);
  const auto rows = static_cast<std::size_t>(picture.height / 3);
  const auto sampleBytes = static_cast<std::size_t>(picture.bytesPerSample);
  const std::size_t rowBytes = static_cast<std::size_t>(picture.width) * sampleBytes;
  const unsigned char* row = picture.samples + rows * rowBytes + columns * sampleBytes;
  std::uint64_t sum = 0;
  for (std::size_t n = 0; n < rows; ++n, row += rowBytes) sum += RowSum(row, columns, picture.bytesPerSample);
  return static_cast<LONG>(sum / (columns * rows));
}

Exposure NextExposure(const ExposureControl& control, LONG target, LONG mean, const Exposure& now) {
  const std::int64_t distance = std::abs(std::int64_t{target} - mean);
  const auto* const found =
      std::ranges::find_if(kSteps, [distance](const auto& row) { return distance >= row.distance; });
  if (found == std::end(kSteps)) return now;
  const LONG sign = mean <= target ? 1 : -1;
  const auto stepped = [&](LONG Exposure::*setting) {
    return std::clamp(now.*setting + sign * found->step.*setting, control.least.*setting,
                      control.most.*setting);
  };
  return {.shutter = stepped(&Exposure::shutter), .gain = stepped(&Exposure::gain)};
}

Exposure WithoutOvershoot(const ExposureControl& control, LONG target, LONG mean, const Exposure& now,
                          Exposure next, bool gainOn) {
  const double light = control.brightness(now);
  if (light <= 0) return next;
  const auto predicted = [&](LONG Exposure::*setting, LONG step) {
    Exposure then = now;
    then.*setting += step;
    return mean * control.brightness(then) / light;
  };
  /// The longest part of a step that does not lead past the target, or one unit that does.
  const auto shortened = [&](LONG Exposure::*setting) {
    LONG step = next.*setting - now.*setting;
    const auto isPast = [&] {
      return mean <= target ? predicted(setting, step) > target : predicted(setting, step) < target;
    };
    while (std::abs(step) > 1 && isPast()) step /= 2;
    const bool nearer = std::abs(target - predicted(setting, step)) < std::abs(target - mean);
    return std::tuple(step, isPast(), nearer);
  };
  const bool gainAtLimit = next.gain == now.gain;
  const auto [shutterStep, shutterPast, shutterNearer] = shortened(&Exposure::shutter);
  const auto [gainStep, gainPast, gainNearer] = shortened(&Exposure::gain);
  const bool takesShutter = !shutterPast || (gainAtLimit && (gainOn || shutterNearer));
  next.shutter = now.shutter + (takesShutter ? shutterStep : 0);
  next.gain = now.gain + (!gainPast || gainNearer ? gainStep : 0);
  return next;
}

void ControlExposure(CZELDeviceProperty& property, const ExposureControl& control, LONG target,
                     const RawPicture& picture) {
  LONG exposureOn = 0;
  LONG gainOn = 0;
  property.GetAuxValue3(&exposureOn);
  property.GetAuxValue4(&gainOn);
  if (exposureOn == 0 && gainOn == 0) return;
  if (picture.width < 3 || picture.height < 3) return;  // sub-sampled to less than a centre

  const LONG mean = CentreMean(picture);
  Exposure now{};
  property.GetShutter(&now.shutter);
  property.GetDigitalGlobalGain(&now.gain);
  Exposure next = NextExposure(control, target, mean, now);
  if (exposureOn == 0) next.shutter = now.shutter;
  if (gainOn == 0) next.gain = now.gain;
  if (control.brightness != nullptr) next = WithoutOvershoot(control, target, mean, now, next, gainOn != 0);
  if (next.shutter != now.shutter) {
    property.SetShutter(next.shutter);
  } else if (next.gain != now.gain) {
    property.SetDigitalGlobalGain(next.gain);
  }
}

}  // namespace zel
