#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "imaging/ColorGains.h"
#include "platform/ComponentTypes.h"

namespace zel {

/// What an image object's buffers are made for, and the frames that go into them. What is set counts from the
/// next allocation on; a picture keeps the shape it was made with.
struct FrameShape {
  LONG outputFormat = 5;
  LONG inputFormat = 0;
  bool keepRaw = false;
  bool eightBitTransfer = true;  ///< one byte per input sample, else two
  LONG twoTap = 0;               ///< also the offset of odd output rows of monochrome YUV input, in bytes
  LONG width = 752, height = 400;
  LONG fullWidth = 752, fullHeight = 480;
  LONG sourceWidth = 752, sourceHeight = 480;  ///< row pitch in samples, and rows, of the input
  bool operator==(const FrameShape&) const = default;
};

/// The shape and what becomes of the samples; all that belongs to the picture itself, so that a copied
/// picture takes it along.
struct FrameFormat : FrameShape {
  LONG bayerMode = 0;
  bool colorful = true;
  bool whitePixelCanceling = false;
  LONG bayerDecodingMethod = 0;
};

/// The settings that act on a frame's samples and pixels.
struct ToneSettings {
  LONG autoWhiteBalance = 0;
  ColorGains gains;
  unsigned char whitePixelThreshold = 255;
  LONG contrast = 0, brightness = 0, saturation = 0, hue = 0;
  LONG gamma = 0;
  LONG dotFilterThreshold = 0, dotFilterEnabled = 0;
  LONG sharpness = 0;
};

/// One frame's settings, taken under the lock at its start.
struct FrameSettings {
  FrameFormat format;
  ToneSettings tones;
  std::array<std::uint8_t, 256> contrastTable;

  std::size_t SourceSamples() const {
    if (format.sourceWidth < 1 || format.sourceHeight < 1) return 0;
    return std::size_t(format.sourceWidth) * std::size_t(format.sourceHeight);
  }
  std::size_t SampleBytes() const { return format.eightBitTransfer ? 1 : 2; }
};

}  // namespace zel
