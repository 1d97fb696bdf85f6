#pragma once

#include <cstdint>
#include <filesystem>
#include <span>

#include "platform/ComponentTypes.h"
#include "tools/support/OutputFiles.h"

namespace zel::tool {

/// What can be written of one frame. Only borrowed.
struct PictureView {
  const std::uint8_t* pixels = nullptr;  ///< blue, green, red (, fourth), top row first
  LONG width = 0;
  LONG height = 0;
  LONG strideBytes = 0;
  LONG bitCount = 0;                  ///< 24 or 32; 0: the samples are no picture
  std::span<const std::uint8_t> raw;  ///< as the camera sent them
};

/// Bits of a pixel in an output format of the image object; 0 for raw samples.
LONG BitCountOf(LONG outputFormat);

/// Writes one file, whole or not at all, replacing one of that name. Throws when that fails.
void WritePicture(const PictureView& picture, FileFormat format, const std::filesystem::path& path);

}  // namespace zel::tool
