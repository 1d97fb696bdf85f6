#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "device/CZELDevice.h"
#include "tools/support/Camera.h"
#include "tools/support/PictureFile.h"

namespace zel::tool {

struct FrameShape {
  LONG width = 0, height = 0, strideBytes = 0;
  LONG bitCount = 0;           ///< of a pixel; 0 when the pixels are raw samples
  std::uint32_t rawBytes = 0;  ///< of the raw frame, also when it is not copied
  LONG inputFormat = 0;        ///< 0 mosaic or grey, 4 packed 24-bit, 6 YUV 4:2:2
  LONG sampleBits = 8;         ///< of a raw sample: 8 or 16
  LONG bayerMode = 0;          ///< 0..3, of the raw frame's first sample

  std::size_t PixelBytes() const {
    return static_cast<std::size_t>(strideBytes) * static_cast<std::size_t>(height);
  }
};

/// One frame as it came, with copies of what is to be saved of it.
struct CapturedFrame : FrameShape {
  std::uint64_t arrivedNs = 0;  ///< monotonic, when the library delivered it
  std::vector<std::uint8_t> pixels, raw;

  PictureView View() const { return {pixels.data(), width, height, strideBytes, bitCount, raw}; }
};

/// What of each frame is copied for its receiver.
enum class Keep { Nothing, Pixels, Raw };

/// A running capture; ends with the object. For one thread.
class Capture {
 public:
  virtual ~Capture() = default;

  /// Waits about `milliseconds` for the next frame; false when none came. The frame's memory is used again.
  virtual bool Next(CapturedFrame* frame, std::uint32_t milliseconds) = 0;
  /// Frames that the camera sent, whole or in part, and that never came out of `Next`.
  virtual std::int64_t Dropped() const = 0;
};

/// "callback", "queue" or "ondemand"; nothing for anything else.
std::optional<DeliveryMode> ParseDeliveryMode(std::string_view name);

/// Starts the open camera in a delivery mode. Throws when it does not start.
std::unique_ptr<Capture> StartCapture(Camera& camera, DeliveryMode mode, Keep keep);

/// Mean luminance, 0..255, of the picture that the library holds now; nothing for raw samples. For captures
/// on demand, where no other thread works on it.
std::optional<std::uint32_t> MeanLuminance(Camera& camera);

}  // namespace zel::tool
