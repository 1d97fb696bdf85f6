#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "imaging/COrvaneImageImpl.h"

namespace zel::tool {

/// One numeric setting of the image object that `develop` offers.
struct DevelopSetting {
  const char* option;
  const char* property;  ///< the camera's setting of the same meaning; "" when there is none
  bool isSwitch;         ///< without a value it means 1
  void (*apply)(COrvaneImageImpl& image, LONG value);
};

/// In the order in which a starting camera makes them.
std::span<const DevelopSetting> DevelopSettings();

struct SettingLimits {
  LONG minimum, maximum;
};

/// What a camera accepts: the range that its property has on every type.
SettingLimits LimitsOf(const DevelopSetting& setting);
/// The camera's name for it and what it means.
std::string TextOf(const DevelopSetting& setting);

/// How one raw frame becomes a picture.
struct DevelopRequest {
  LONG width = 0, height = 0;                     ///< of the picture, pixels
  std::optional<LONG> sourceWidth, sourceHeight;  ///< of the raw frame, pixels; default: the picture's
  LONG inputFormat = 0;                           ///< 0 mosaic or grey, 4 packed 24-bit, 6 YUV 4:2:2
  std::optional<LONG> outputFormat, imageClass;
  LONG bits = 8;
  bool complementary = false;
  std::vector<double> colorMatrix;  ///< empty, or 16 row by row
  std::optional<LONG> whitePixel, whiteThreshold;
  std::vector<std::optional<LONG>> settings;  ///< one for each of `DevelopSettings()`

  LONG SourceWidth() const { return sourceWidth.value_or(width); }
  LONG SourceHeight() const { return sourceHeight.value_or(height); }
  /// "1280 x 1024 8-bit mosaic", and the bytes of such a frame.
  std::string FrameText() const;
  std::uint64_t FrameBytes() const;
};

/// Converts the frame (`FrameBytes()` bytes; changed in place) and returns the image object with the picture
/// in it. Throws a usage error for sizes and formats that can't be, and when the frame does not fill the
/// output.
std::unique_ptr<COrvaneImageImpl> Develop(const DevelopRequest& request, std::vector<std::uint8_t>& frame);

}  // namespace zel::tool
